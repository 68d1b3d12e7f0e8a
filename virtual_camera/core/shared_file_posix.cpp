#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "core/shared_file.h"
#include "core/utf8_path.h"

namespace virtual_camera {
namespace {

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
  while (::flock(handle_, reads_only_ ? LOCK_SH : LOCK_EX) != 0) {
    if (errno != EINTR) {
      ThrowLastError("lock");
    }
  }
}

void SharedFile::Unlock() noexcept {
  ::flock(handle_, LOCK_UN);
}

}  // namespace virtual_camera
