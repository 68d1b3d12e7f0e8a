#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// What the completion scripts for shells have in common: branches that offer words for a place in a
// command line. Scripts have the functions _borvanusb_words "A B", _borvanusb_files and
// _borvanusb_names KIND.

struct BranchForm {
  // A text that must be equal; * at its begin or end stands for anything.
  std::string (*pattern)(const std::string& text);
  // What is done for a pattern, and then no more.
  std::string (*branch)(const std::string& pattern, const std::string& action);
  // Puts words into the variable `options`.
  std::string (*assign)(const std::string& pattern, const std::string& words);
};

// Names of options with a value, and the first words of commands of several words, each with
// `between` between them.
std::string OptionsWithValues(const ToolDescription& tool, const std::string& between);
std::string Groups(const ToolDescription& tool, const std::string& between);

// The words of `options` that begin with a dash.
std::string OptionWords(const std::vector<OptionDescription>& options);

// After "COMMAND --OPTION": its values.
std::string OptionValueBranches(const ToolDescription& tool, const BranchForm& form);
// After "COMMAND": its options.
std::string CommandOptionBranches(const ToolDescription& tool, const BranchForm& form);
// After the words of a command so far: the next ones.
std::string NextWordBranches(const ToolDescription& tool, const BranchForm& form);
// After "COMMAND N": the argument in place N, from 0 on.
std::string ArgumentBranches(const ToolDescription& tool, const BranchForm& form);

// What `profile names` calls the names that an option takes; mostly empty.
std::string NamesTakenBy(const OptionDescription& option);

}  // namespace borvanusb
