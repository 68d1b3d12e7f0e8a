#include "profile_commands/check_options.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/format.h"
#include "command/nearest.h"
#include "command/option_defaults.h"
#include "command/values.h"

namespace borvanusb {

namespace {

bool IsCalled(const OptionDescription& option, const std::string& name) {
  return !option.positional && std::ranges::find(option.names, name) != option.names.end();
}

// Tries to parse the value with `read`. Returns the reason if it is rejected, else an empty text.
template <typename Read>
std::string Tried(const OptionDescription& option, const std::string& value, Read read) {
  if (option.value.empty()) {
    return "takes no value; only options with a value have defaults";
  }
  try {
    read(value);
  } catch (const WrongValue& wrong) {
    return Format("{} {}", Quoted(value), wrong.what());
  }
  return {};
}

// Why a command, or the options common to all commands, reject the value. Returns nothing if there
// is no such option.
std::optional<std::string> OwnProblem(const CommandRule& rule, const std::string& name,
                                      const std::string& value) {
  const auto& options = rule.description.options;
  for (std::size_t i = 0; i < options.size(); ++i) {
    if (IsCalled(options[i], name)) {
      const auto command = rule.make();
      return Tried(options[i], value,
                   [&](const std::string& text) { rule.store[i](*command, text); });
    }
  }
  return std::nullopt;
}

std::optional<std::string> CommonProblem(const std::string& name, const std::string& value) {
  const CommonRules& rules = AllCommonRules();
  for (std::size_t i = 0; i < rules.options.size(); ++i) {
    if (IsCalled(rules.options[i], name)) {
      CommonArguments common;
      return Tried(rules.options[i], value,
                   [&](const std::string& text) { rules.store[i](common, text); });
    }
  }
  return std::nullopt;
}

std::vector<std::string> NamesOfOptions(const CommandRules& rules) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      if (!option.positional && !option.value.empty()) {
        names.push_back(option.names.back());
      }
    }
  };
  add(AllCommonRules().options);
  for (const CommandRule& rule : rules) {
    add(rule.description.options);
  }
  return names;
}

}  // namespace

std::string DefaultProblem(const std::string& option, const std::string& value,
                           const CommandRules& rules) {
  if (!MayHaveDefault(option)) {
    return "can't have a default in a profile";
  }
  bool found = false;
  if (const auto problem = CommonProblem(option, value)) {
    found = true;
    if (!problem->empty()) {
      return *problem;
    }
  }
  for (const CommandRule& rule : rules) {
    if (const auto problem = OwnProblem(rule, option, value)) {
      found = true;
      if (!problem->empty()) {
        return *problem;
      }
    }
  }
  if (found) {
    return {};
  }
  const std::string nearest = NearestWord(option, NamesOfOptions(rules));
  return Format("no command has this option{}",
                nearest.empty() ? "" : Format("; did you mean {}?", nearest.substr(2)));
}

}  // namespace borvanusb
