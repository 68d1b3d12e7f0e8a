#pragma once

#include <string>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// A command line's words, sorted by what takes them; nothing is read into values yet.
struct SortedWords {
  std::vector<std::string> command;               // words of it, as far as they are given
  const CommandDescription* described = nullptr;  // null until the command is complete
  // The values of each option, in the order of the description; a flag has some text for each time
  // it is given.
  std::vector<std::vector<std::string>> common;
  std::vector<std::vector<std::string>> own;
  std::vector<std::string> strange;  // words that nothing takes
};

// Throws Failure kUsage for an option whose value is missing and for a flag with one. `tool` must
// outlive the result.
SortedWords SortWords(const ToolDescription& tool, const std::vector<std::string>& words);

}  // namespace borvanusb
