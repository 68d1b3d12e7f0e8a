#pragma once

#include <string>
#include <string_view>

namespace virtual_camera {

// UTF-8 as Windows's wide text and back. Bytes that are no UTF-8 and lone surrogates become U+FFFD.
std::wstring WideOf(std::string_view utf8);
std::string Utf8Of(std::wstring_view wide);

// Equality of device paths: Windows compares them without regard to case.
bool SamePath(std::wstring_view a, std::wstring_view b);

}  // namespace virtual_camera
