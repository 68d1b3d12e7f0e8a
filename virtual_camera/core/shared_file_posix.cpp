#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "core/shared_file.h"
#include "core/utf8_path.h"

namespace virtual_camera {
namespace {

// Locks are on bytes that no file has.
constexpr off_t kFirstLockedByte = off_t{1} << 62U;

// Locks of the open file, not of the process: two objects of one process exclude each other.
bool SetLock(int handle, int command, short type, off_t position) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = position;
  lock.l_len = 1;
  return ::fcntl(handle, command, &lock) == 0;
}

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

SharedFile::SharedFile(const std::string& path_utf8)
    : handle_(::open(path_utf8.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (handle_ < 0) {
    ThrowLastError("open");
  }
}

std::unique_ptr<SharedFile> SharedFile::OpenForReading(const std::string& path_utf8) {
  const int descriptor = ::open(path_utf8.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) {
    return std::unique_ptr<SharedFile>(new SharedFile(descriptor, true));
  }
  const int error = errno;
  const std::filesystem::path folder = PathFromUtf8(path_utf8).parent_path();
  std::error_code none;
  if (error == ENOENT && (folder.empty() || std::filesystem::is_directory(folder, none))) {
    return nullptr;
  }
  throw std::system_error(error, std::generic_category(), "open");
}

SharedFile::~SharedFile() {
  ::close(handle_);
}

std::uint64_t SharedFile::Size() const {
  struct stat status {};
  if (::fstat(handle_, &status) != 0) {
    ThrowLastError("size");
  }
  return static_cast<std::uint64_t>(status.st_size);
}

std::size_t SharedFile::ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = ::pread(handle_, bytes.data() + done, bytes.size() - done,
                                  static_cast<off_t>(position + done));
    if (count < 0 && errno != EINTR) {
      ThrowLastError("read");
    }
    if (count == 0) {
      break;
    }
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    }
  }
  return done;
}

void SharedFile::WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = ::pwrite(handle_, bytes.data() + done, bytes.size() - done,
                                   static_cast<off_t>(position + done));
    if (count < 0 && errno != EINTR) {
      ThrowLastError("write");
    }
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    }
  }
}

void SharedFile::Truncate(std::uint64_t size) {
  if (::ftruncate(handle_, static_cast<off_t>(size)) != 0) {
    ThrowLastError("truncate");
  }
}

void SharedFile::Lock() {
  while (!SetLock(handle_, F_OFD_SETLKW, reads_only_ ? F_RDLCK : F_WRLCK, kFirstLockedByte)) {
    if (errno != EINTR) {
      ThrowLastError("lock");
    }
  }
}

void SharedFile::Unlock() noexcept {
  SetLock(handle_, F_OFD_SETLK, F_UNLCK, kFirstLockedByte);
}

bool SharedFile::TryLockSeat(std::uint32_t seat) {
  if (SetLock(handle_, F_OFD_SETLK, F_WRLCK, kFirstLockedByte + 1 + seat)) {
    return true;
  }
  if (errno != EAGAIN && errno != EACCES) {
    ThrowLastError("lock");
  }
  return false;
}

void SharedFile::UnlockSeat(std::uint32_t seat) noexcept {
  SetLock(handle_, F_OFD_SETLK, F_UNLCK, kFirstLockedByte + 1 + seat);
}

}  // namespace virtual_camera
