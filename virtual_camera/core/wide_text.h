#pragma once

#include <string>
#include <string_view>

namespace virtual_camera {

// Convert UTF-8 to the wide text of Windows and back. Bytes that are not UTF-8, and lone
// surrogates, become U+FFFD.
std::wstring WideOf(std::string_view utf8);
std::string Utf8Of(std::wstring_view wide);

// Whether two device paths are equal. Windows compares them without regard to case.
bool SamePath(std::wstring_view a, std::wstring_view b);

}  // namespace virtual_camera
