#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// Completes an unfinished command line, for the Tab key of the prompt. It uses the same
// descriptions as the shell completions.
struct LineCompletion {
  std::size_t begin = 0;                // start of the word to complete
  std::vector<std::string> candidates;  // complete words as written in a line, sorted
  // Whether more text follows directly, as after a folder or --option=.
  static bool IsOpen(const std::string& candidate);
};

LineCompletion CompleteLine(const ToolDescription& tool, const std::string& line);

// The common prefix of all texts, without splitting a UTF-8 character.
std::string CommonBeginning(const std::vector<std::string>& texts);

}  // namespace borvanusb
