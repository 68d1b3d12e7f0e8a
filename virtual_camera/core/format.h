#pragma once

// Formats values into a text: Format("camera {}: {:.1f} s", index, seconds). The compiler checks
// the format string against the values. Texts are bytes in any code page.
#include <fmt/format.h>

#include <string>

namespace virtual_camera {

// Implements Format() for values of any types, so that the formatting code is compiled once and not
// in every source file.
std::string FormatValues(fmt::string_view form, fmt::format_args values);

template <typename... Values>
std::string Format(fmt::format_string<const Values&...> form, const Values&... values) {
  return FormatValues(form, fmt::make_format_args(values...));
}

}  // namespace virtual_camera
