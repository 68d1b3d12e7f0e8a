// What --help prints.
#include <algorithm>

#include "base/exit_code.h"
#include "base/joined.h"
#include "base/version.h"
#include "command/command_line.h"
#include "command/usage.h"

namespace borvanusb {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kTextColumn = 24;
// The overview's names are longer.
constexpr std::size_t kOverviewColumn = 27;

// Appends `text` in lines that end before column 80, broken at blanks, each begun at `indent`; the
// first one goes on where `out` ends.
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
               std::size_t column = kTextColumn) {
  out += "  " + name;
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
  return Joined(option.names, ", ") + (option.value.empty() ? "" : " " + option.value);
}

std::string Usage(const CommandDescription& command) {
  return "borvanusb " + Joined(command.words) + UsageArguments(command, NameAndValue, " [OPTIONS]");
}

std::string CommonLine(const std::vector<OptionDescription>& options) {
  std::string line = "Common:";
  for (const OptionDescription& option : options) {
    if (option.names.front() != "--version") {
      line += (line.ends_with(':') ? " " : ", ") + option.names.back() +
              (option.value.empty() ? "" : " " + option.value);
    }
  }
  return line;
}

std::string CommandHelp(const ToolDescription& tool, const CommandDescription& command) {
  std::string help = "Usage: " + Usage(command) + "\n\n";
  AppendWrapped(help, command.text + (command.details.empty() ? "" : " " + command.details), 0);
  if (!command.options.empty()) {
    help += "\n";
  }
  for (const OptionDescription& option : command.options) {
    AppendRow(help, NameAndValue(option), option.text);
  }
  help += "\n";
  AppendWrapped(help, CommonLine(CommonOptionsOf(tool, command)), 2);
  help += "Exit codes: 0 done, others say which failure; borvanusb --help lists them.\n\n";
  for (const std::string& example : command.examples) {
    help += "Example: " + example + "\n";
  }
  return help;
}

// A row of the overview: a command with what must be given to it.
void AppendCommand(std::string& help, const CommandDescription& command) {
  std::string name = Joined(command.words, " ");
  for (const OptionDescription& option : command.options) {
    if (option.positional) {
      name += option.required ? " " + option.names.front() : " [" + option.names.front() + "]";
    }
  }
  AppendRow(help, name, command.text, kOverviewColumn);
}

std::string GroupHelp(const ToolDescription& tool, const std::string& word) {
  std::string help = "Usage: borvanusb " + word + " COMMAND\n\n";
  for (const CommandDescription& command : tool.commands) {
    if (command.words.front() == word) {
      AppendCommand(help, command);
    }
  }
  return help + "\nborvanusb " + word + " COMMAND --help tells more of one.\n";
}

// All of them, broken into lines between two.
std::string ExitCodeList() {
  std::string list = "Exit codes:";
  std::size_t line = 0;
  for (const ExitCodeTexts& texts : kExitCodes) {
    const std::string entry = " " + std::to_string(static_cast<int>(texts.code)) + " " +
                              std::string(texts.summary) +
                              (texts.code == kExitCodes.back().code ? "" : ",");
    if (list.size() - line + entry.size() > kColumns) {
      list += "\n ";
      line = list.size() - 1;
    }
    list += entry;
  }
  return list + "\n";
}

std::string Overview(const ToolDescription& tool) {
  std::string help = "borvanusb " + std::string(kToolVersion) + ": ";
  AppendWrapped(help, tool.text, 0);
  help +=
      "\n"
      "Usage: borvanusb COMMAND [ARGUMENTS] [OPTIONS]\n"
      "\n"
      "To begin with\n"
      "  borvanusb list             which cameras there are\n"
      "  borvanusb doctor           why one is not among them\n"
      "  borvanusb COMMAND --help   what a command takes, with an example\n";
  std::string group;
  for (const CommandDescription& command : tool.commands) {
    if (command.group != group) {
      group = command.group;
      help += "\n" + group + "\n";
    }
    AppendCommand(help, command);
  }
  help += "\nCommon options, before or after a command's words\n";
  for (const OptionDescription& option : tool.common) {
    AppendRow(help, NameAndValue(option), option.text, kOverviewColumn);
  }
  help +=
      "\n"
      "Numbers are decimal or hexadecimal with 0x; sizes and addresses may end in K\n"
      "or M; ranges are 0x1000+256, or 0x1000-0x10ff, both included.\n";
  help += "\n" + ExitCodeList();
  return help;
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
