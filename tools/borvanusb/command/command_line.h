#pragma once

#include <string>
#include <variant>
#include <vector>

#include "command/command.h"
#include "command/option_defaults.h"

namespace borvanusb {

struct CommandRule;

// A text that was asked for instead of a command: --help or --version.
struct TextAnswer {
  std::string text;
};

// Reads a command line, without the program's name. The texts are UTF-8. Throws Failure (kUsage)
// that names the argument and what is allowed.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words);
// The same for other commands than the tool's.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const std::vector<CommandRule>& rules);
// The same with values for options that are not given. They are taken where the command accepts
// them beside what is given. Throws Failure kFile for one that its option does not accept.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const std::vector<CommandRule>& rules,
                                                     const DefaultsSource& defaults);
// The same with the tool's commands.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const DefaultsSource& defaults);

// The same for one line of a script: words stand between blanks, "double quotes" hold blanks
// together, # opens a remark. Throws Failure (kUsage) for a quote that is left open.
std::vector<std::string> SplitLine(const std::string& line);

// The other way round: words as a command line to be copied from the terminal, with borvanusb in
// front; words with blanks or backslashes stand in quotes.
std::string CommandLineText(const std::vector<std::string>& words);
// The same without borvanusb in front: a line of a script.
std::string LineText(const std::vector<std::string>& words);

// The commands and options as the manual page and the completions tell them, in the order of the
// help.
struct OptionDescription {
  std::vector<std::string> names;  // "-h", "--help"; a positional has its one name without dashes
  std::string value;               // placeholder of its value, empty for a flag
  std::string text;
  bool positional = false;
  bool required = false;
  std::vector<std::string> choices;  // the values it takes, if they are few
  bool takes_file = false;
  bool repeated = false;  // may be given several times
  std::string completes;  // the names that its values are, as `profile names` calls them; mostly
                          // empty
};

// A common option that would change nothing for a command.
struct RefusedOption {
  std::string name;
  std::string why;  // behind the command's words: "which lists all cameras"
};

struct CommandDescription {
  std::vector<std::string> words;  // "flash", "program"
  std::string group;               // headline it stands under
  std::string text;
  std::string details;  // what more there is to know; may be empty
  std::vector<OptionDescription> options;
  std::vector<RefusedOption> refused;
  std::vector<std::string> examples;  // whole command lines
};

struct ToolDescription {
  std::string text;
  std::vector<OptionDescription> common;
  std::vector<CommandDescription> commands;
};

// The common options that a command takes.
std::vector<OptionDescription> CommonOptionsOf(const ToolDescription& tool,
                                               const CommandDescription& command);

ToolDescription DescribeTool();

// What --help prints: the overview for no words, the commands of a group ("reg"), or one command
// ("reg", "read"). At most 80 columns wide.
std::string HelpText(const ToolDescription& tool, const std::vector<std::string>& words);

}  // namespace borvanusb
