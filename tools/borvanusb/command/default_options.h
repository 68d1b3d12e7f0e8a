#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/command_rules.h"
#include "command/option_defaults.h"
#include "command/word_sorter.h"

namespace borvanusb {

// Whether a command accepts a common option.
bool Takes(const CommandDescription& command, std::string_view option);

// Fills in defaults for options that are not given, if the command accepts them.
class DefaultOptions {
 public:
  // `is_good` returns whether the command accepts the current words in `sorted`.
  DefaultOptions(const ToolDescription& tool, const CommandRule& rule, SortedWords& sorted,
                 std::function<bool()> is_good);

  // Throws Failure kFile if an option does not accept its default.
  void Fill(OptionDefaults defaults);

  const OptionDefaults& From() const { return from_; }
  // The options that got a default: "--slave".
  const std::vector<std::string>& Names() const { return names_; }

 private:
  // An option without a given value that has a default.
  struct Open {
    std::string name;
    std::string value;
    std::vector<std::string>* values = nullptr;
    bool required = false;
  };

  std::vector<Open> OpenOptions();
  void Consider(const OptionDescription& option, std::vector<std::string>& values,
                const std::pair<std::string, std::string>& entry,
                const std::function<void(const std::string&)>& read, std::vector<Open>& open) const;
  void Set(const Open& option);
  void Unset(const Open& option);

  const ToolDescription& tool_;
  const CommandRule& rule_;
  SortedWords& sorted_;
  std::function<bool()> is_good_;
  OptionDefaults from_;
  std::vector<std::string> names_;
};

}  // namespace borvanusb
