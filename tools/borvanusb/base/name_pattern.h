#pragma once

#include <string_view>

namespace borvanusb {

// Whether a name matches a pattern. In the pattern, * matches any number of characters, including
// none, and ? matches one. The case of the letters A to Z is ignored. If `separator` is not '\0',
// * and ? do not match it.
bool MatchesPattern(std::string_view pattern, std::string_view name, char separator = '\0');

// Whether a text contains * or ?.
bool IsPattern(std::string_view text);

// Whether two names are equal. The case of the letters A to Z is ignored.
bool SameName(std::string_view left, std::string_view right);

}  // namespace borvanusb
