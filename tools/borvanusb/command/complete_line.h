#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// Completes an unfinished command line, for the Tab key of the prompt. It uses the same
// descriptions as the shell completions.
struct LineCompletion {
  std::size_t begin = 0;                // start of the word to complete
  std::vector<std::string> candidates;  // complete words as written in a line, sorted
  // Whether more text follows directly, as after a folder or NAME=.
  static bool IsOpen(const std::string& candidate);
};

// Names of a profile that begin with a word. The kind is one of those of `profile names`.
using NameSource =
    std::function<std::vector<std::string>(const std::string& kind, const std::string& word)>;

// `names` may be empty: then no names are completed.
LineCompletion CompleteLine(const ToolDescription& tool, const std::string& line,
                            const NameSource& names);

// The common prefix of all texts, without splitting a UTF-8 character.
std::string CommonBeginning(const std::vector<std::string>& texts);

}  // namespace borvanusb
