#include "support/terminal_text.h"

#include <algorithm>

#include "support/check.h"

namespace borvan_fuzz {

void CheckOneLine(const std::string& text, const std::string& what) {
  Check(!text.empty(), what + " is empty");
  Check(std::none_of(text.begin(), text.end(),
                     [](unsigned char byte) { return byte < ' ' || byte == 0x7F; }),
        what + " holds a control character: " + text);
}

}  // namespace borvan_fuzz
