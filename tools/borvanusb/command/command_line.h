#pragma once

#include <string>
#include <variant>
#include <vector>

#include "command/command.h"
#include "command/option_defaults.h"

namespace borvanusb {

struct CommandRule;

// The text for --help or --version, instead of a command.
struct TextAnswer {
  std::string text;
};

// Parses a command line without the program's name. The texts are UTF-8. Throws Failure (kUsage)
// with the name of the argument and what is allowed.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words);
// The same with other commands than those of the tool.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const std::vector<CommandRule>& rules);
// The same with default values. A default is used if the option is not given and the command
// accepts it together with the given options. Throws Failure kFile if the option does not accept
// the value.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const std::vector<CommandRule>& rules,
                                                     const DefaultsSource& defaults);
// The same with the commands of the tool.
std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const DefaultsSource& defaults);

// Splits a line of a script into words. Blanks separate words, "double quotes" keep blanks in a
// word, # starts a comment. Throws Failure (kUsage) for an unclosed quote.
std::vector<std::string> SplitLine(const std::string& line);

// Formats words as a command line to copy from the terminal, starting with borvanusb. Words with
// blanks or backslashes are quoted.
std::string CommandLineText(const std::vector<std::string>& words);
// The same without borvanusb, as a line of a script.
std::string LineText(const std::vector<std::string>& words);

// Descriptions of commands and options for the manual page and the completions, in the order of the
// help.
struct OptionDescription {
  std::vector<std::string> names;  // "-h", "--help"; for a positional, one name without dashes
  std::string value;               // placeholder of the value; empty for a flag
  std::string text;
  bool positional = false;
  bool required = false;
  std::vector<std::string> choices;  // allowed values, if there are only a few
  bool takes_file = false;
  bool repeated = false;  // may be given several times
  std::string completes;  // kind of names in a profile, as for `profile names`; usually empty
};

// A common option that would have no effect on a command.
struct RefusedOption {
  std::string name;
  std::string why;  // text after the command's words: "which lists all cameras"
};

struct CommandDescription {
  std::vector<std::string> words;  // "flash", "program"
  std::string group;               // headline in the help
  std::string text;
  std::string details;  // further help; may be empty
  std::vector<OptionDescription> options;
  std::vector<RefusedOption> refused;
  std::vector<std::string> examples;  // complete command lines
};

struct ToolDescription {
  std::string text;
  std::vector<OptionDescription> common;
  std::vector<CommandDescription> commands;
};

// The option with one of these names; null if there is none.
const OptionDescription* FindOption(const std::vector<OptionDescription>& options,
                                    const std::string& name);

// The common options that a command accepts.
std::vector<OptionDescription> CommonOptionsOf(const ToolDescription& tool,
                                               const CommandDescription& command);

ToolDescription DescribeTool();

// The text for --help: the overview without words, the commands of a group ("reg"), or one command
// ("reg", "read"). At most 80 columns wide.
std::string HelpText(const ToolDescription& tool, const std::vector<std::string>& words);

}  // namespace borvanusb
