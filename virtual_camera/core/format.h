#pragma once

// Texts of forms with places for values: Format("camera {}: {:.1f} s", index, seconds). The
// compiler checks each form against its values. Texts are bytes of any code page.
#include <fmt/format.h>

#include <string>

namespace virtual_camera {

// What Format() calls with the types of its values taken away, so that the work of formatting is
// compiled once and not for each source.
std::string FormatValues(fmt::string_view form, fmt::format_args values);

template <typename... Values>
std::string Format(fmt::format_string<const Values&...> form, const Values&... values) {
  return FormatValues(form, fmt::make_format_args(values...));
}

}  // namespace virtual_camera
