#include "command/word_sorter.h"
#include "base/joined.h"

#include <algorithm>
#include <string_view>

#include "base/failure.h"
#include "base/format.h"

namespace borvanusb {

namespace {

constexpr const char* kHint = "borvanusb --help shows more.";

std::string HelpHint(const CommandDescription* command) {
  return command != nullptr ? Format("borvanusb {} --help shows more.", Joined(command->words))
                            : kHint;
}

const OptionDescription* FindOption(const ToolDescription& tool, const std::string& name) {
  const OptionDescription* option = FindOption(tool.common, name);
  for (const CommandDescription& command : tool.commands) {
    option = option != nullptr ? option : FindOption(command.options, name);
  }
  return option;
}

// An unknown option is reported later, with a better message.
void RefuseEmptyAfterSign(const ToolDescription& tool, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word == "--") {
      return;
    }
    const std::string name = word.substr(0, word.find('='));
    const OptionDescription* const option = FindOption(tool, name);
    if (word == Format("{}=", name) && option != nullptr) {
      const char* const why =
          option->value.empty() ? ": takes no value" : ": a value is missing after the =";
      throw Failure(ExitCode::kUsage, name + why, kHint);
    }
  }
}

const CommandDescription* FindCommand(const ToolDescription& tool,
                                      const std::vector<std::string>& words) {
  const auto command =
      std::find_if(tool.commands.begin(), tool.commands.end(),
                   [&](const CommandDescription& known) { return known.words == words; });
  return command != tool.commands.end() ? &*command : nullptr;
}

// Whether a command begins with these words.
bool BeginsCommand(const ToolDescription& tool, const std::vector<std::string>& words) {
  return std::any_of(tool.commands.begin(), tool.commands.end(),
                     [&](const CommandDescription& command) {
                       return command.words.size() >= words.size() &&
                              std::equal(words.begin(), words.end(), command.words.begin());
                     });
}

// A negative number is treated as an argument, and rejected as such.
bool LooksLikeOption(const std::string& word) {
  constexpr std::string_view kDigits = "0123456789";
  return word.size() > 1 && word.front() == '-' && kDigits.find(word[1]) == std::string_view::npos;
}

class Sorter {
 public:
  Sorter(const ToolDescription& tool, const std::vector<std::string>& words)
      : tool_(tool), words_(words) {
    sorted_.common.resize(tool.common.size());
  }

  SortedWords Sort() {
    bool only_arguments = false;
    while (next_ < words_.size()) {
      const std::string& word = words_[next_++];
      if (!only_arguments && word == "--") {
        only_arguments = true;
      } else if (!only_arguments && LooksLikeOption(word)) {
        TakeOption(word);
      } else {
        TakeArgument(word);
      }
    }
    LeaveOptionalOut();
    return std::move(sorted_);
  }

 private:
  using Values = std::vector<std::string>;

  // The place for an option's values. Null if neither the command nor the tool has the option.
  Values* PlaceOf(const OptionDescription* option) {
    if (sorted_.described != nullptr) {
      const auto& own = sorted_.described->options;
      for (std::size_t i = 0; i < own.size(); ++i) {
        if (&own[i] == option) {
          return &sorted_.own[i];
        }
      }
    }
    return &sorted_.common[static_cast<std::size_t>(option - tool_.common.data())];
  }

  void TakeOption(const std::string& word) {
    const std::size_t sign = word.find('=');
    const std::string name = word.substr(0, sign);
    const OptionDescription* option =
        sorted_.described != nullptr ? FindOption(sorted_.described->options, name) : nullptr;
    option = option != nullptr ? option : FindOption(tool_.common, name);
    if (option == nullptr || option->positional) {
      sorted_.strange.push_back(word);
      return;
    }
    const bool is_flag = option->value.empty();
    if (is_flag && sign != std::string::npos) {
      throw Failure(ExitCode::kUsage, Format("{}: takes no value", name),
                    HelpHint(sorted_.described));
    }
    if (!is_flag && sign == std::string::npos && next_ == words_.size()) {
      throw Failure(ExitCode::kUsage,
                    Format("{}: {} is missing: {}", name, option->value, option->text),
                    HelpHint(sorted_.described));
    }
    std::string value;
    if (sign != std::string::npos) {
      value = word.substr(sign + 1);
    } else if (!is_flag) {
      value = words_[next_++];
    }
    PlaceOf(option)->push_back(std::move(value));
  }

  // If required arguments are missing, takes the words of preceding optional ones: for "[RANGE]
  // FILE", a single word is the file.
  void LeaveOptionalOut() {
    if (sorted_.described == nullptr) {
      return;
    }
    const auto& own = sorted_.described->options;
    for (std::size_t i = own.size(); i-- > 0;) {
      for (std::size_t before = i;
           own[i].positional && own[i].required && sorted_.own[i].empty() && before-- > 0;) {
        if (own[before].positional && !own[before].required) {
          sorted_.own[i].swap(sorted_.own[before]);
        }
      }
    }
  }

  void TakeArgument(const std::string& word) {
    if (sorted_.described != nullptr) {
      const auto& own = sorted_.described->options;
      for (std::size_t i = 0; i < own.size(); ++i) {
        if (own[i].positional && (own[i].repeated || sorted_.own[i].empty())) {
          sorted_.own[i].push_back(word);
          return;
        }
      }
      sorted_.strange.push_back(word);
      return;
    }
    std::vector<std::string> longer = sorted_.command;
    longer.push_back(word);
    if (!sorted_.strange.empty() || !BeginsCommand(tool_, longer)) {
      sorted_.strange.push_back(word);
      return;
    }
    sorted_.command = std::move(longer);
    sorted_.described = FindCommand(tool_, sorted_.command);
    if (sorted_.described != nullptr) {
      sorted_.own.resize(sorted_.described->options.size());
    }
  }

  const ToolDescription& tool_;
  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  SortedWords sorted_;
};

}  // namespace

SortedWords SortWords(const ToolDescription& tool, const std::vector<std::string>& words) {
  RefuseEmptyAfterSign(tool, words);
  return Sorter(tool, words).Sort();
}

}  // namespace borvanusb
