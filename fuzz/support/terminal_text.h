#pragma once

#include <string>

namespace borvan_fuzz {

// Fails unless `text` is one line that says something and that any terminal shows as it is: no
// control character, however hostile what it quotes.
void CheckOneLine(const std::string& text, const std::string& what);

}  // namespace borvan_fuzz
