#include "core/wide_text.h"

#include <windows.h>

namespace virtual_camera {

std::wstring WideOf(std::string_view utf8) {
  if (utf8.empty()) {
    return {};
  }
  const int bytes = static_cast<int>(utf8.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, wide.data(), length);
  return wide;
}

std::string Utf8Of(std::wstring_view wide) {
  if (wide.empty()) {
    return {};
  }
  const int count = static_cast<int>(wide.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), count, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), count, utf8.data(), length, nullptr, nullptr);
  return utf8;
}

bool SamePath(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace virtual_camera
