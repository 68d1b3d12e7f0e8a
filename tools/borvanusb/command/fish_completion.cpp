#include "base/format.h"
#include "command/completion_branches.h"
#include "command/completion_scripts.h"
#include "command/templates.h"

namespace borvanusb {

namespace {

std::string FishPattern(const std::string& text) {
  return Format("'{}'", text);
}

std::string FishBranch(const std::string& pattern, const std::string& action) {
  return Format(
      "    case {}\n"
      "      {}\n"
      "      return\n",
      pattern, action);
}

std::string FishAssign(const std::string& pattern, const std::string& words) {
  return Format(
      "    case {}\n"
      "      set options \"{}\"\n",
      pattern, words);
}

}  // namespace

std::string FishCompletion(const ToolDescription& tool) {
  constexpr BranchForm kForm{FishPattern, FishBranch, FishAssign};
  return Filled(kFishCompletionTemplate, {{"OPTIONS_WITH_VALUES", OptionsWithValues(tool, " ")},
                                          {"GROUPS", Groups(tool, " ")},
                                          {"OPTION_VALUES", OptionValueBranches(tool, kForm)},
                                          {"COMMON_OPTIONS", OptionWords(tool.common)},
                                          {"COMMAND_OPTIONS", CommandOptionBranches(tool, kForm)},
                                          {"NEXT_WORDS", NextWordBranches(tool, kForm)},
                                          {"ARGUMENT_VALUES", ArgumentBranches(tool, kForm)}});
}

}  // namespace borvanusb
