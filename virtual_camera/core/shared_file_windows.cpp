#include <windows.h>

#include <system_error>

#include "core/shared_file.h"
#include "core/wide_text.h"

namespace virtual_camera {
namespace {

// Windows makes locked bytes unreadable for others, so the lock is on one byte that no file has.
constexpr DWORD kLockPositionHigh = 0x40000000;

[[noreturn]] void ThrowLastError(const char* what) {
  throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

// The byte after that of the file's lock belongs to the first seat.
OVERLAPPED LockAt(std::uint32_t offset) {
  OVERLAPPED overlapped{};
  overlapped.Offset = offset;
  overlapped.OffsetHigh = kLockPositionHigh;
  return overlapped;
}

// Reads and writes use the position of the file, not an OVERLAPPED: with an OVERLAPPED, Wine
// reports each call to its server, which takes a hundred times as long as the call.
void Seek(HANDLE handle, std::uint64_t position, const char* what) {
  LARGE_INTEGER target{};
  target.QuadPart = static_cast<LONGLONG>(position);
  if (!::SetFilePointerEx(handle, target, nullptr, FILE_BEGIN)) {
    ThrowLastError(what);
  }
}

HANDLE Open(const std::string& path_utf8, DWORD access, DWORD creation) {
  return ::CreateFileW(WideOf(path_utf8).c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, creation,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

SharedFile::SharedFile(const std::string& path_utf8)
    : handle_(Open(path_utf8, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS)) {
  if (handle_ == INVALID_HANDLE_VALUE) {
    ThrowLastError("open");
  }
}

std::unique_ptr<SharedFile> SharedFile::OpenForReading(const std::string& path_utf8) {
  const HANDLE handle = Open(path_utf8, GENERIC_READ, OPEN_EXISTING);
  if (handle != INVALID_HANDLE_VALUE) {
    return std::unique_ptr<SharedFile>(new SharedFile(handle, true));
  }
  // A missing folder is another error.
  if (::GetLastError() == ERROR_FILE_NOT_FOUND) {
    return nullptr;
  }
  ThrowLastError("open");
}

SharedFile::~SharedFile() {
  ::CloseHandle(handle_);
}

std::uint64_t SharedFile::Size() const {
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(handle_, &size)) {
    ThrowLastError("size");
  }
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t SharedFile::ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const {
  Seek(handle_, position, "read");
  std::size_t done = 0;
  while (done < bytes.size()) {
    DWORD count = 0;
    if (!::ReadFile(handle_, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &count,
                    nullptr)) {
      ThrowLastError("read");
    }
    if (count == 0) {
      break;
    }
    done += count;
  }
  return done;
}

void SharedFile::WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes) {
  Seek(handle_, position, "write");
  std::size_t done = 0;
  while (done < bytes.size()) {
    DWORD count = 0;
    if (!::WriteFile(handle_, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &count,
                     nullptr)) {
      ThrowLastError("write");
    }
    done += count;
  }
}

void SharedFile::Truncate(std::uint64_t size) {
  FILE_END_OF_FILE_INFO end{};
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
  if (!::SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end)) {
    ThrowLastError("truncate");
  }
}

void SharedFile::Lock() {
  OVERLAPPED overlapped = LockAt(0);
  const DWORD kind = reads_only_ ? 0 : LOCKFILE_EXCLUSIVE_LOCK;
  if (!::LockFileEx(handle_, kind, 0, 1, 0, &overlapped)) {
    ThrowLastError("lock");
  }
}

void SharedFile::Unlock() noexcept {
  OVERLAPPED overlapped = LockAt(0);
  ::UnlockFileEx(handle_, 0, 1, 0, &overlapped);
}

bool SharedFile::TryLockSeat(std::uint32_t seat) {
  OVERLAPPED overlapped = LockAt(1 + seat);
  constexpr DWORD kKind = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
  if (::LockFileEx(handle_, kKind, 0, 1, 0, &overlapped)) {
    return true;
  }
  if (::GetLastError() != ERROR_LOCK_VIOLATION && ::GetLastError() != ERROR_IO_PENDING) {
    ThrowLastError("lock");
  }
  return false;
}

void SharedFile::UnlockSeat(std::uint32_t seat) noexcept {
  OVERLAPPED overlapped = LockAt(1 + seat);
  ::UnlockFileEx(handle_, 0, 1, 0, &overlapped);
}

}  // namespace virtual_camera
