#include <windows.h>

#include "base/flush_file.h"
#include "windows/handle.h"

namespace borvanusb {

void FlushFile(const std::filesystem::path& file) {
  const UniqueHandle handle(CreateFileW(file.c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() != INVALID_HANDLE_VALUE) {
    FlushFileBuffers(handle.get());
  }
}

std::error_code ReplaceThrough(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
      FALSE) {
    return {};
  }
  return {static_cast<int>(GetLastError()), std::system_category()};
}

bool IsInUse(const std::error_code& error) {
  if (error.category() == std::generic_category()) {
    return error == std::errc::permission_denied;
  }
  return error.value() == ERROR_SHARING_VIOLATION || error.value() == ERROR_ACCESS_DENIED;
}

bool SameName(const std::filesystem::path& left, const std::filesystem::path& right) {
  const std::wstring& a = left.native();
  const std::wstring& b = right.native();
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace borvanusb
