#include "command/default_options.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "command/values.h"

namespace borvanusb {

bool Takes(const CommandDescription& command, std::string_view option) {
  return std::ranges::find(command.refused, option, &RefusedOption::name) == command.refused.end();
}

DefaultOptions::DefaultOptions(const ToolDescription& tool, const CommandRule& rule,
                               SortedWords& sorted, std::function<bool()> is_good)
    : tool_(tool), rule_(rule), sorted_(sorted), is_good_(std::move(is_good)) {}

void DefaultOptions::Fill(OptionDefaults defaults) {
  from_ = std::move(defaults);
  const std::vector<Open> open = OpenOptions();
  // Usually all defaults can be used. If some of them contradict given options, the others are
  // tried one by one.
  for (const Open& option : open) {
    Set(option);
  }
  if (open.empty() || is_good_()) {
    return;
  }
  for (const Open& option : open) {
    if (!option.required) {
      Unset(option);
    }
  }
  // Repeats, because a default may be valid only together with a later one.
  bool more = true;
  while (more) {
    more = false;
    for (const Open& option : open) {
      if (!option.values->empty()) {
        continue;
      }
      Set(option);
      if (is_good_()) {
        more = true;
      } else {
        Unset(option);
      }
    }
  }
}

std::vector<DefaultOptions::Open> DefaultOptions::OpenOptions() {
  std::vector<Open> open;
  for (const auto& entry : from_.values) {
    if (!MayHaveDefault(entry.first) || !Takes(rule_.description, entry.first)) {
      continue;
    }
    const auto& own = rule_.description.options;
    for (std::size_t i = 0; i < own.size(); ++i) {
      Consider(
          own[i], sorted_.own[i], entry,
          [&](const std::string& text) { rule_.store[i](*rule_.make(), text); }, open);
    }
    for (std::size_t i = 0; i < tool_.common.size(); ++i) {
      Consider(
          tool_.common[i], sorted_.common[i], entry,
          [&](const std::string& text) {
            CommonArguments common;
            AllCommonRules().store[i](common, text);
          },
          open);
    }
  }
  return open;
}

void DefaultOptions::Consider(const OptionDescription& option, std::vector<std::string>& values,
                              const std::pair<std::string, std::string>& entry,
                              const std::function<void(const std::string&)>& read,
                              std::vector<Open>& open) const {
  const auto& [name, value] = entry;
  if (option.positional || option.value.empty() || !values.empty() ||
      std::ranges::find(option.names, name) == option.names.end()) {
    return;
  }
  try {
    read(value);
  } catch (const WrongValue& wrong) {
    throw Failure(
        ExitCode::kFile,
        Format("{}: options.{}: {} {}", from_.file, name.substr(2), Quoted(value), wrong.what()),
        Format("Correct it, or give {} yourself.", name));
  }
  open.push_back({name, value, &values, option.required});
}

void DefaultOptions::Set(const Open& option) {
  *option.values = {option.value};
  names_.push_back(option.name);
}

void DefaultOptions::Unset(const Open& option) {
  option.values->clear();
  std::erase(names_, option.name);
}

}  // namespace borvanusb
