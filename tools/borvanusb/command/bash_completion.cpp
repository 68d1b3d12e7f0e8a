// The scripts for bash and zsh. Their branches have the same form.
#include "base/format.h"
#include "command/completion_branches.h"
#include "command/completion_scripts.h"
#include "command/templates.h"

namespace borvanusb {

namespace {

// Quotes a text, except for a * at its beginning or end.
std::string BashPattern(const std::string& text) {
  const bool begins = text.starts_with('*');
  const bool ends = !begins && text.ends_with('*');
  const std::string fixed = text.substr(begins ? 1 : 0, text.size() - (begins || ends ? 1 : 0));
  return Format("{}\"{}\"{}", begins ? "*" : "", fixed, ends ? "*" : "");
}

std::string BashBranch(const std::string& pattern, const std::string& action) {
  return Format("    {}) {}; return ;;\n", pattern, action);
}

std::string BashAssign(const std::string& pattern, const std::string& words) {
  return Format("    {}) options=\"{}\" ;;\n", pattern, words);
}

std::string Script(std::string_view form_of_script, const ToolDescription& tool) {
  constexpr BranchForm kForm{BashPattern, BashBranch, BashAssign};
  return Filled(form_of_script, {{"OPTIONS_WITH_VALUES", OptionsWithValues(tool, "|")},
                                 {"GROUPS", Groups(tool, "|")},
                                 {"OPTION_VALUES", OptionValueBranches(tool, kForm)},
                                 {"COMMON_OPTIONS", OptionWords(tool.common)},
                                 {"COMMAND_OPTIONS", CommandOptionBranches(tool, kForm)},
                                 {"NEXT_WORDS", NextWordBranches(tool, kForm)},
                                 {"ARGUMENT_VALUES", ArgumentBranches(tool, kForm)}});
}

}  // namespace

// Bash splits --option=value into three words, and vid:pid as well. The script joins them again.
std::string BashCompletion(const ToolDescription& tool) {
  return Script(kBashCompletionTemplate, tool);
}

std::string ZshCompletion(const ToolDescription& tool) {
  return Script(kZshCompletionTemplate, tool);
}

}  // namespace borvanusb
