#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Which of the known words a mistyped one is likely to mean; empty when none is near.
std::string NearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace borvanusb
