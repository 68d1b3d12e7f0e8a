#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// Common parts of the completion scripts: branches that offer words at a position of the command
// line. Each script must define the functions _borvanusb_words "A B", _borvanusb_files and
// _borvanusb_names KIND.

struct BranchForm {
  // A pattern for a text. A * at its beginning or end matches anything.
  std::string (*pattern)(const std::string& text);
  // The action for a pattern. No other branch is tried after it.
  std::string (*branch)(const std::string& pattern, const std::string& action);
  // Assigns words to the variable `options`.
  std::string (*assign)(const std::string& pattern, const std::string& words);
};

// Names of options with a value, and first words of commands that have several words, separated by
// `between`.
std::string OptionsWithValues(const ToolDescription& tool, const std::string& between);
std::string Groups(const ToolDescription& tool, const std::string& between);

// Those words of `options` that begin with a dash.
std::string OptionWords(const std::vector<OptionDescription>& options);

// Branches after "COMMAND --OPTION": the option's values.
std::string OptionValueBranches(const ToolDescription& tool, const BranchForm& form);
// Branches after "COMMAND": its options.
std::string CommandOptionBranches(const ToolDescription& tool, const BranchForm& form);
// Branches after the first words of a command: the possible next words.
std::string NextWordBranches(const ToolDescription& tool, const BranchForm& form);
// Branches after "COMMAND N": the argument at index N, from 0.
std::string ArgumentBranches(const ToolDescription& tool, const BranchForm& form);

// The kind of names that an option accepts, as used by `profile names`. Usually empty.
std::string NamesTakenBy(const OptionDescription& option);

}  // namespace borvanusb
