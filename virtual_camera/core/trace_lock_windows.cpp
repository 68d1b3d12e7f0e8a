#include <windows.h>

#include <array>
#include <cstdio>
#include <system_error>

#include "core/names.h"
#include "core/trace_lock.h"

namespace virtual_camera {
namespace {

// Returns eight bytes, initially zeros, that all processes with the same file share until the last
// of them ends. Returns null if the system refuses.
std::uint64_t* ShareWord(const FileIdentity& file) {
  std::array<wchar_t, 80> name{};
  std::swprintf(name.data(), name.size(), L"Local\\VirtualCameraTrace-%016llx-%016llx",
                static_cast<unsigned long long>(file.volume),
                static_cast<unsigned long long>(file.number));
  const HANDLE section = ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                              sizeof(std::uint64_t), name.data());
  if (section == nullptr) {
    return nullptr;
  }
  void* const word = ::MapViewOfFile(section, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, 0);
  ::CloseHandle(section);  // the view keeps it
  return static_cast<std::uint64_t*>(word);
}

}  // namespace

TraceLock::TraceLock(SharedFile& file, const std::string& path_utf8) : file_(file) {
  const FileIdentity identity = IdentifyFile(path_utf8);
  if (!identity.rest.empty()) {
    return;  // a device
  }
  word_ = ShareWord(identity);
  if (word_ == nullptr) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "share");
  }
  try {
    lock_.emplace(file_, *word_);
  } catch (...) {
    ::UnmapViewOfFile(word_);
    throw;
  }
}

TraceLock::~TraceLock() {
  lock_.reset();
  if (word_ != nullptr) {
    ::UnmapViewOfFile(word_);
  }
}

void TraceLock::Lock() {
  if (lock_) {
    lock_->Lock(*word_);
  } else {
    file_.Lock();
  }
}

void TraceLock::Unlock() noexcept {
  if (lock_) {
    WordLock::Unlock(*word_);
  } else {
    file_.Unlock();
  }
}

}  // namespace virtual_camera
