#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// What may stand at the end of an unfinished command line, for the Tab key of the prompt. The same
// descriptions make the completions of the shells.
struct LineCompletion {
  std::size_t begin = 0;                // where the word to be completed begins in the line
  std::vector<std::string> candidates;  // whole words as they stand in a line, sorted
  // Whether something follows the word, as it does after a folder and after --option=.
  static bool IsOpen(const std::string& candidate);
};

LineCompletion CompleteLine(const ToolDescription& tool, const std::string& line);

// The beginning that all texts share; whole characters of UTF-8.
std::string CommonBeginning(const std::vector<std::string>& texts);

}  // namespace borvanusb
