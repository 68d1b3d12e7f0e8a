#pragma once

#include <string_view>

namespace borvanusb {

// Names with * for any characters and ? for one; small and large letters (A to Z) are the same.
// With a `separator`, * and ? do not stand for it.
bool MatchesPattern(std::string_view pattern, std::string_view name, char separator = '\0');

// Whether a text has * or ?.
bool IsPattern(std::string_view text);

// Whether two names are the same but for small and large letters (A to Z).
bool SameName(std::string_view left, std::string_view right);

}  // namespace borvanusb
