#include "base/format.h"

namespace borvanusb {

std::string FormatValues(fmt::string_view form, fmt::format_args values) {
  return fmt::vformat(form, values);
}

}  // namespace borvanusb
