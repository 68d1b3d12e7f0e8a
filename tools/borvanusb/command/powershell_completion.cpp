#include "base/format.h"
#include "base/joined.h"
#include "command/completion_branches.h"
#include "command/completion_scripts.h"
#include "command/templates.h"

namespace borvanusb {

namespace {

// A PowerShell string in single quotes. Only single quotes need escaping in it.
std::string Literal(const std::string& text) {
  std::string literal = "'";
  for (const char character : text) {
    literal += character;
    if (character == '\'') {
      literal += character;
    }
  }
  return Format("{}'", literal);
}

std::string List(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) {
    list += Format("{}{}", list.empty() ? "" : ", ", Literal(text));
  }
  return Format("@({})", list);
}

// A table row: the option's name, its text, whether it takes a value, a short list of values, and
// the kind of names for `profile names`.
std::string OptionRow(const OptionDescription& option) {
  return Format("    @{{ Name = {}; Text = {}; TakesValue = {}; Values = {}; Names = {} }}\n",
                Literal(option.names.back()), Literal(option.text),
                option.value.empty() ? "$false" : "$true", List(option.choices),
                Literal(NamesTakenBy(option)));
}

std::string OptionRows(const std::vector<OptionDescription>& options) {
  std::string rows;
  for (const OptionDescription& option : options) {
    if (!option.positional) {
      rows += OptionRow(option);
    }
  }
  return rows;
}

std::vector<std::string> ArgumentChoices(const CommandDescription& command) {
  std::vector<std::string> choices;
  for (const OptionDescription& option : command.options) {
    if (option.positional) {
      choices.insert(choices.end(), option.choices.begin(), option.choices.end());
    }
  }
  return choices;
}

// The kinds of names for the arguments, in order.
std::vector<std::string> ArgumentNames(const CommandDescription& command) {
  std::vector<std::string> kinds;
  for (const OptionDescription& option : command.options) {
    if (option.positional) {
      kinds.push_back(NamesTakenBy(option));
    }
  }
  return kinds;
}

std::vector<std::string> Refused(const CommandDescription& command) {
  std::vector<std::string> names;
  for (const RefusedOption& option : command.refused) {
    names.push_back(option.name);
  }
  return names;
}

std::string CommandRows(const ToolDescription& tool) {
  std::string rows;
  for (const CommandDescription& command : tool.commands) {
    rows += Format("    @{{ Words = {}; Text = {}; Values = {}; Names = {}; Without = {} }}\n",
                   Literal(Joined(command.words)), Literal(command.text),
                   List(ArgumentChoices(command)), List(ArgumentNames(command)),
                   List(Refused(command)));
  }
  return rows;
}

std::string CommandOptions(const ToolDescription& tool) {
  std::string lists;
  for (const CommandDescription& command : tool.commands) {
    lists += Format(
        "    {} = @(\n"
        "{}"
        "    )\n",
        Literal(Joined(command.words)), OptionRows(command.options));
  }
  return lists;
}

}  // namespace

// If the script offers nothing, PowerShell completes file names.
std::string PowerShellCompletion(const ToolDescription& tool) {
  return Filled(kPowerShellCompletionTemplate, {{"COMMANDS", CommandRows(tool)},
                                                {"COMMAND_OPTIONS", CommandOptions(tool)},
                                                {"COMMON_OPTIONS", OptionRows(tool.common)}});
}

}  // namespace borvanusb
