#pragma once

#include <string>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// The words of a command line, sorted by their meaning, but not yet parsed.
struct SortedWords {
  std::vector<std::string> command;               // words of the command, as far as given
  const CommandDescription* described = nullptr;  // null until the command is complete
  // The values of each option, in the order of the description. A flag has one text for each time
  // it is given.
  std::vector<std::vector<std::string>> common;
  std::vector<std::vector<std::string>> own;
  std::vector<std::string> strange;  // words without a meaning
};

// Throws Failure kUsage for an option without its value and for a flag with a value. `tool` must
// outlive the result.
SortedWords SortWords(const ToolDescription& tool, const std::vector<std::string>& words);

}  // namespace borvanusb
