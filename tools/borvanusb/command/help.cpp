// The text of --help.
#include <algorithm>

#include "base/exit_code.h"
#include "base/format.h"
#include "base/joined.h"
#include "base/version.h"
#include "command/command_line.h"
#include "command/templates.h"
#include "command/usage.h"

namespace borvanusb {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kTextColumn = 24;
// Column of the texts in the overview, which has longer names.
constexpr std::size_t kOverviewColumn = 27;

// Appends `text`, wrapped at blanks before column 80. Each line starts at `indent`; the first one
// continues the last line of `out`.
void AppendWrapped(std::string& out, const std::string& text, std::size_t indent) {
  std::size_t column = out.size() - (out.rfind('\n') + 1);
  std::size_t begin = 0;
  bool line_begins = true;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::size_t length = end - begin;
    if (!line_begins && column + 1 + length > kColumns) {
      out += '\n';
      out.append(indent, ' ');
      column = indent;
      line_begins = true;
    }
    if (!line_begins) {
      out += ' ';
      ++column;
    }
    out.append(text, begin, length);
    column += length;
    line_begins = false;
    begin = end + 1;
  }
  out += '\n';
}

void AppendRow(std::string& out, const std::string& name, const std::string& text,
               std::size_t column) {
  out += Format("  {}", name);
  const std::size_t width = 2 + name.size();
  if (width + 2 > column) {
    out += '\n';
    out.append(column, ' ');
  } else {
    out.append(column - width, ' ');
  }
  AppendWrapped(out, text, column);
}

std::string NameAndValue(const OptionDescription& option) {
  return Format("{}{}", Joined(option.names, ", "),
                option.value.empty() ? "" : Format(" {}", option.value));
}

std::string Usage(const CommandDescription& command) {
  return Format("borvanusb {}{}", Joined(command.words),
                UsageArguments(command, NameAndValue, " [OPTIONS]"));
}

std::string CommonLine(const std::vector<OptionDescription>& options) {
  std::string line = "Common:";
  for (const OptionDescription& option : options) {
    if (option.names.front() != "--version") {
      line += Format("{}{}{}", line.ends_with(':') ? " " : ", ", option.names.back(),
                     option.value.empty() ? "" : Format(" {}", option.value));
    }
  }
  return line;
}

// A text in separate lines, wrapped as by AppendWrapped().
std::string Wrapped(const std::string& text, std::size_t indent) {
  std::string lines;
  AppendWrapped(lines, text, indent);
  return lines;
}

std::string OptionRows(const std::vector<OptionDescription>& options, std::size_t column) {
  std::string rows;
  for (const OptionDescription& option : options) {
    AppendRow(rows, NameAndValue(option), option.text, column);
  }
  return rows;
}

std::string CommandHelp(const ToolDescription& tool, const CommandDescription& command) {
  const std::string options = OptionRows(command.options, kTextColumn);
  std::string examples;
  for (const std::string& example : command.examples) {
    examples += Format("Example: {}\n", example);
  }
  const std::string details = command.details.empty() ? "" : Format(" {}", command.details);
  return Filled(kCommandHelpTemplate,
                {{"USAGE", Usage(command)},
                 {"TEXT", Wrapped(command.text + details, 0)},
                 {"OPTIONS", options.empty() ? "" : Format("\n{}", options)},
                 {"COMMON_OPTIONS", Wrapped(CommonLine(CommonOptionsOf(tool, command)), 2)},
                 {"EXAMPLES", examples}});
}

// A row of the overview: a command with its required arguments.
void AppendCommand(std::string& help, const CommandDescription& command) {
  std::string name = Joined(command.words, " ");
  for (const OptionDescription& option : command.options) {
    if (option.positional) {
      const std::string argument =
          Format("{}{}", option.names.front(), option.repeated ? "..." : "");
      name += option.required ? Format(" {}", argument) : Format(" [{}]", argument);
    }
  }
  AppendRow(help, name, command.text, kOverviewColumn);
}

std::string GroupHelp(const ToolDescription& tool, const std::string& word) {
  std::string commands;
  for (const CommandDescription& command : tool.commands) {
    if (command.words.front() == word) {
      AppendCommand(commands, command);
    }
  }
  return Filled(kGroupHelpTemplate, {{"GROUP", word}, {"COMMANDS", commands}});
}

// All exit codes. Lines are wrapped only between two codes.
std::string ExitCodeList() {
  std::string list = "Exit codes:";
  std::size_t line = 0;
  for (const ExitCodeTexts& texts : kExitCodes) {
    const std::string entry = Format(" {} {}{}", static_cast<int>(texts.code), texts.summary,
                                     texts.code == kExitCodes.back().code ? "" : ",");
    if (list.size() - line + entry.size() > kColumns) {
      list += "\n ";
      line = list.size() - 1;
    }
    list += entry;
  }
  return Format("{}\n", list);
}

// The commands of each group, below its headline.
std::string CommandGroups(const ToolDescription& tool) {
  std::string groups;
  std::string group;
  for (const CommandDescription& command : tool.commands) {
    if (command.group != group) {
      group = command.group;
      groups += Format("\n{}\n", group);
    }
    AppendCommand(groups, command);
  }
  return groups;
}

std::string Overview(const ToolDescription& tool) {
  return Filled(kOverviewTemplate,
                {{"TITLE", Wrapped(Format("borvanusb {}: {}", kToolVersion, tool.text), 0)},
                 {"COMMANDS", CommandGroups(tool)},
                 {"COMMON_OPTIONS", OptionRows(tool.common, kOverviewColumn)},
                 {"EXIT_CODES", ExitCodeList()}});
}

}  // namespace

std::string HelpText(const ToolDescription& tool, const std::vector<std::string>& words) {
  if (words.empty()) {
    return Overview(tool);
  }
  for (const CommandDescription& command : tool.commands) {
    if (command.words == words) {
      return CommandHelp(tool, command);
    }
  }
  return GroupHelp(tool, words.front());
}

}  // namespace borvanusb
