#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// The known word that a mistyped word most likely means. Empty if none is similar.
std::string NearestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace borvanusb
