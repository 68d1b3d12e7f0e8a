#include <nlohmann/json.hpp>
#include <string_view>

#include "base/exit_code.h"
#include "base/format.h"
#include "base/version.h"
#include "command/camera_work.h"
#include "command/command_line.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/manual.h"
#include "command/templates.h"
#include "command/text_command.h"
#include "command/usage.h"
#include "output/output.h"

namespace borvanusb {

namespace {

// Escapes a text for roff: no escapes, no requests, dashes that can be copied.
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
  return roff.starts_with('.') || roff.starts_with('\'') ? Format("\\&{}", roff) : roff;
}

// A text in a roff font, given by its letter.
std::string InFace(char face, std::string_view text) {
  return Format("\\f{}{}\\fR", face, Roff(text));
}

std::string Bold(std::string_view text) {
  return InFace('B', text);
}

std::string Italic(std::string_view text) {
  return InFace('I', text);
}

std::string RoffNameAndValue(const OptionDescription& option) {
  if (option.positional) {
    return Italic(option.names.front());
  }
  std::string text;
  for (const std::string& name : option.names) {
    text += text.empty() ? "" : ", ";
    text += Bold(name);
  }
  if (!option.value.empty()) {
    text += Format(" {}", Italic(option.value));
  }
  return text;
}

std::string OptionEntries(const std::vector<OptionDescription>& options) {
  std::string entries;
  for (const OptionDescription& option : options) {
    entries += Format(
        ".TP\n"
        "{}\n"
        "{}.\n",
        RoffNameAndValue(option), Roff(option.text));
  }
  return entries;
}

std::string RoffUsage(const CommandDescription& command) {
  std::string usage = "\\fBborvanusb";
  for (const std::string& word : command.words) {
    usage += Format(" {}", Roff(word));
  }
  return Format("{}\\fR{}", usage, UsageArguments(command, RoffNameAndValue, " [\\fIOPTIONS\\fR]"));
}

std::string RefusedText(const CommandDescription& command) {
  std::string names;
  for (const RefusedOption& option : command.refused) {
    const bool last = &option == &command.refused.back();
    names += names.empty() ? "" : (last ? " and " : ", ");
    names += Bold(option.name);
  }
  return names.empty() ? "" : Format("Takes no {}.", names);
}

std::string Examples(const CommandDescription& command) {
  std::string examples;
  for (const std::string& example : command.examples) {
    examples += Format(
        ".PP\n"
        "Example:\n"
        ".PP\n"
        ".EX\n"
        "{}\n"
        ".EE\n",
        Roff(example));
  }
  return examples;
}

std::string CommandSection(const CommandDescription& command) {
  return Filled(kManualCommandTemplate, {{"USAGE", RoffUsage(command)},
                                         {"TEXT", Roff(command.text)},
                                         {"DETAILS", Roff(command.details)},
                                         {"REFUSED_OPTIONS", RefusedText(command)},
                                         {"OPTIONS", OptionEntries(command.options)},
                                         {"EXAMPLES", Examples(command)}});
}

std::string CommandSections(const ToolDescription& tool) {
  std::string sections;
  std::string group;
  for (const CommandDescription& command : tool.commands) {
    if (command.group != group) {
      group = command.group;
      sections += Format(".SS {}\n", Roff(group));
    }
    sections += CommandSection(command);
  }
  return sections;
}

std::string ExitCodeEntries() {
  std::string entries;
  for (const ExitCodeTexts& texts : kExitCodes) {
    entries += Format(
        ".TP\n"
        "\\fB{}\\fR\n"
        "{}\n",
        static_cast<int>(texts.code), Roff(texts.meaning));
  }
  return entries;
}

std::string ManualPage(const ToolDescription& tool) {
  return Filled(kManualTemplate, {{"VERSION", kToolVersion},
                                  {"SUMMARY", Roff(tool.text)},
                                  {"COMMANDS", CommandSections(tool)},
                                  {"COMMON_OPTIONS", OptionEntries(tool.common)},
                                  {"EXIT_CODES", ExitCodeEntries()}});
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
