#pragma once

#include <string>

namespace borvan_fuzz {

// Fails unless `text` is a single, non-empty line without control characters, whatever texts it
// quotes.
void CheckOneLine(const std::string& text, const std::string& what);

}  // namespace borvan_fuzz
