#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Concatenates texts, with `between` as the separator.
inline std::string Joined(const std::vector<std::string>& texts, std::string_view between = " ") {
  std::string joined;
  bool first = true;
  for (const std::string& text : texts) {
    if (!first) {
      joined += between;
    }
    first = false;
    joined += text;
  }
  return joined;
}

}  // namespace borvanusb
