#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/exit_code.h"
#include "base/version.h"
#include "command/camera_work.h"
#include "command/command_line.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/manual.h"
#include "command/text_command.h"
#include "command/usage.h"
#include "output/output.h"

namespace borvanusb {

namespace {

// A text that roff shows as it is: no escapes, no requests, dashes that can be copied.
std::string Roff(std::string_view text) {
  std::string roff;
  for (const char character : text) {
    if (character == '\\') {
      roff += "\\e";
    } else if (character == '-') {
      roff += "\\-";
    } else {
      roff += character;
    }
  }
  return roff.starts_with('.') || roff.starts_with('\'') ? "\\&" + roff : roff;
}

// A text in the face that roff calls by one letter.
std::string InFace(char face, std::string_view text) {
  std::string roff = "\\f";
  roff += face;
  roff += Roff(text);
  roff += "\\fR";
  return roff;
}

std::string Bold(std::string_view text) {
  return InFace('B', text);
}

std::string Italic(std::string_view text) {
  return InFace('I', text);
}

std::string NameAndValue(const OptionDescription& option) {
  if (option.positional) {
    return Italic(option.names.front());
  }
  std::string text;
  for (const std::string& name : option.names) {
    text += text.empty() ? "" : ", ";
    text += Bold(name);
  }
  if (!option.value.empty()) {
    text += ' ';
    text += Italic(option.value);
  }
  return text;
}

std::string OptionEntries(const std::vector<OptionDescription>& options) {
  std::string entries;
  for (const OptionDescription& option : options) {
    entries += ".TP\n" + NameAndValue(option) + "\n" + Roff(option.text) + ".\n";
  }
  return entries;
}

std::string Usage(const CommandDescription& command) {
  std::string usage = "\\fBborvanusb";
  for (const std::string& word : command.words) {
    usage += ' ';
    usage += Roff(word);
  }
  return usage + "\\fR" + UsageArguments(command, NameAndValue, " [\\fIOPTIONS\\fR]");
}

std::string RefusedText(const CommandDescription& command) {
  std::string names;
  for (const RefusedOption& option : command.refused) {
    const bool last = &option == &command.refused.back();
    names += names.empty() ? "" : (last ? " and " : ", ");
    names += Bold(option.name);
  }
  return names.empty() ? "" : "\nTakes no " + names + ".";
}

std::string CommandSection(const CommandDescription& command) {
  std::string section = ".TP\n" + Usage(command) + "\n" + Roff(command.text);
  if (!command.details.empty()) {
    section += '\n';
    section += Roff(command.details);
  }
  section += RefusedText(command) + "\n.RS\n" + OptionEntries(command.options);
  for (const std::string& example : command.examples) {
    section += ".PP\nExample:\n.PP\n.EX\n" + Roff(example) + "\n.EE\n";
  }
  return section + ".RE\n";
}

std::string CommandSections(const ToolDescription& tool) {
  std::string sections;
  std::string group;
  for (const CommandDescription& command : tool.commands) {
    if (command.group != group) {
      group = command.group;
      sections += ".SS " + Roff(group) + "\n";
    }
    sections += CommandSection(command);
  }
  return sections;
}

struct Entry {
  std::string_view name;
  std::string_view text;
};

constexpr std::array<Entry, 3> kEnvironment = {{
    {"BORVANUSB_CAMERA",
     "The camera that is meant when --camera is not given, as --camera takes it."},
    {"BORVANUSB_DLL",
     "Full name of the BorvanUSB_x64.dll to use instead of the one that is found."},
    {"BORVANUSB_JOURNALS",
     "Folder of the journals of unfinished changes; default %LOCALAPPDATA%\\BorvanUSB\\journals."},
}};

constexpr std::array<Entry, 2> kFiles = {{
    {"BorvanUSB_x64.dll", "The library, beside borvanusb.exe."},
    {"docs/json/COMMAND.schema.json", "The form of what --json prints."},
}};

template <typename Entries>
std::string EntryList(const Entries& entries) {
  std::string list;
  for (const Entry& entry : entries) {
    list += ".TP\n" + Bold(entry.name) + "\n" + Roff(entry.text) + "\n";
  }
  return list;
}

constexpr std::string_view kDescription =
    "reads and writes what only a camera's own vendor unit reaches: the registers of its chip, "
    "those "
    "of its sensor over I2C, and the SPI flash that holds its firmware. It never guesses which "
    "camera "
    "is meant: when several are plugged in, --camera says which. Progress and remarks go to "
    "standard "
    "error, results to standard output.";
constexpr std::string_view kNumbers =
    "Numbers are decimal, or hexadecimal with 0x. Sizes and addresses may end in K or M (1024 and "
    "1048576). A range is one address, 0x1000-0x1fff with both ends included, or 0x1000+256: an "
    "address and a size. After -- nothing is an option any more.";

std::string ManualPage(const ToolDescription& tool) {
  std::string page = ".TH BORVANUSB 1 \"\" \"borvanusb " + std::string(kToolVersion) + "\"\n";
  page += ".SH NAME\nborvanusb \\- " + Roff(tool.text) + "\n";
  page +=
      ".SH SYNOPSIS\n"
      "\\fBborvanusb\\fR \\fICOMMAND\\fR [\\fIARGUMENTS\\fR] [\\fIOPTIONS\\fR]\n"
      ".br\n"
      "\\fBborvanusb\\fR [\\fICOMMAND\\fR] \\fB\\-\\-help\\fR\n";
  page += ".SH DESCRIPTION\n\\fBborvanusb\\fR\n" + Roff(kDescription) + "\n.PP\n" + Roff(kNumbers) +
          "\n";
  page += ".SH COMMANDS\n" + CommandSections(tool);
  page +=
      ".SH OPTIONS\nCommands take these, before or after their words, where not said "
      "otherwise.\n" +
      OptionEntries(tool.common);
  page += ".SH ENVIRONMENT\n" + EntryList(kEnvironment);
  page += ".SH EXIT STATUS\n";
  for (const ExitCodeTexts& texts : kExitCodes) {
    const std::string number = std::to_string(static_cast<int>(texts.code));
    page += EntryList(std::array<Entry, 1>{{{number, texts.meaning}}});
  }
  page += ".SH FILES\n" + EntryList(kFiles);
  return page;
}

}  // namespace

ExitCode Run(const ManualCommand& /*command*/, Context& context) {
  const std::string page = ManualPage(DescribeTool());
  context.result = {{"manual", page}};
  PrintLines(page, context.output);
  return ExitCode::kDone;
}

CommandRule ManualRule() {
  RuleOf<ManualCommand> rule({"manual"}, "Prints the manual page, for man.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb manual > borvanusb.1");
  return rule.Take();
}

}  // namespace borvanusb
