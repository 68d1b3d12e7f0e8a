#include "core/format.h"

namespace virtual_camera {

std::string FormatValues(fmt::string_view form, fmt::format_args values) {
  return fmt::vformat(form, values);
}

}  // namespace virtual_camera
