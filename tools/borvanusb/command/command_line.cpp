#include "command/command_line.h"
#include "base/joined.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "base/failure.h"
#include "base/format.h"
#include "base/version.h"
#include "command/command_rules.h"
#include "command/default_options.h"
#include "command/nearest.h"
#include "command/values.h"
#include "command/word_sorter.h"
#include "output/printable.h"

namespace borvanusb {

namespace {

std::string HelpHint(const std::vector<std::string>& command) {
  return Format("borvanusb {}{}--help shows more.", Joined(command), command.empty() ? "" : " ");
}

// A hint for the error: one line for each suggestion, or where to read more.
std::string HintOf(const WrongUse& wrong, const std::vector<std::string>& words,
                   const std::vector<std::string>& command) {
  std::string hint;
  for (const WrongUse::Way& way : wrong.Ways()) {
    std::vector<std::string> line = words;
    line.insert(std::find(line.begin(), line.end(), "--"), way.more.begin(), way.more.end());
    hint +=
        Format("{}{}: {}", hint.empty() ? "" : "\n", way.when, Printable(CommandLineText(line)));
  }
  return hint.empty() ? HelpHint(command) : hint;
}

class Given : public GivenOptions {
 public:
  Given(const ToolDescription& tool, const SortedWords& words) : tool_(tool), words_(words) {}

  std::size_t Count(const std::string& name) const override {
    const auto* values = Find(tool_.common, words_.common, name);
    if (values == nullptr && words_.described != nullptr) {
      values = Find(words_.described->options, words_.own, name);
    }
    if (values == nullptr) {
      throw std::logic_error(Format("{} is no option of this command", name));
    }
    return values->size();
  }

 private:
  using Values = std::vector<std::string>;

  static const Values* Find(const std::vector<OptionDescription>& options,
                            const std::vector<Values>& values, const std::string& name) {
    for (std::size_t i = 0; i < options.size(); ++i) {
      const auto& names = options[i].names;
      if (std::find(names.begin(), names.end(), name) != names.end()) {
        return &values[i];
      }
    }
    return nullptr;
  }

  const ToolDescription& tool_;
  const SortedWords& words_;
};

// The words that are possible at the position of an unknown one.
std::vector<std::string> NextWords(const ToolDescription& tool, const SortedWords& words) {
  std::vector<std::string> next;
  for (const CommandDescription& command : tool.commands) {
    const std::size_t depth = words.command.size();
    if (command.words.size() > depth &&
        std::equal(words.command.begin(), words.command.end(), command.words.begin()) &&
        std::find(next.begin(), next.end(), command.words[depth]) == next.end()) {
      next.push_back(command.words[depth]);
    }
  }
  return next;
}

std::vector<std::string> OptionNames(const ToolDescription& tool, const SortedWords& words) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      if (!option.positional) {
        names.insert(names.end(), option.names.begin(), option.names.end());
      }
    }
  };
  if (words.described != nullptr) {
    add(words.described->options);
  }
  add(words.described != nullptr ? CommonOptionsOf(tool, *words.described) : tool.common);
  return names;
}

// The commands whose last word is `word`. For "read": "reg read, i2c read or flash read".
std::string CommandsEndingIn(const ToolDescription& tool, const std::string& word) {
  std::vector<std::string> found;
  for (const CommandDescription& command : tool.commands) {
    if (command.words.size() > 1 && command.words.back() == word) {
      found.push_back(Joined(command.words));
    }
  }
  std::string list;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const char* const between = i + 1 < found.size() ? ", " : " or ";
    list += Format("{}{}", i == 0 ? "" : between, found[i]);
  }
  return list;
}

[[noreturn]] void RefuseStrange(const ToolDescription& tool, const SortedWords& words) {
  const std::string& word = words.strange.front();
  const bool option = word.size() > 1 && word.starts_with('-');
  std::string message;
  std::vector<std::string> known;
  if (option) {
    message = Format("{}{}unknown option {}", Joined(words.command),
                     words.command.empty() ? "" : ": ", Quoted(word.substr(0, word.find('='))));
    known = OptionNames(tool, words);
  } else if (words.described == nullptr) {
    message = Format("unknown command {}", Quoted(Format("{}{}{}", Joined(words.command),
                                                         words.command.empty() ? "" : " ", word)));
    known = NextWords(tool, words);
  } else {
    message = Format("{}: {} is one argument too many", Joined(words.command), Quoted(word));
  }
  std::string meant = words.command.empty() ? CommandsEndingIn(tool, word) : "";
  if (meant.empty()) {
    meant = NearestWord(word.substr(0, word.find('=')), known);
    if (!meant.empty() && !option && !words.command.empty()) {
      meant = Format("{} {}", Joined(words.command), meant);
    }
  }
  if (!meant.empty()) {
    message += Format("; did you mean {}?", meant);
  }
  throw Failure(ExitCode::kUsage, message, HelpHint(words.command));
}

[[noreturn]] void RefuseUnfinished(const ToolDescription& tool, const SortedWords& words) {
  if (words.command.empty()) {
    throw Failure(ExitCode::kUsage, "a command is missing, such as borvanusb list",
                  "borvanusb --help shows all commands and what to do first.");
  }
  std::string next;
  for (const std::string& word : NextWords(tool, words)) {
    next += Format("{}{}", next.empty() ? "" : ", ", word);
  }
  throw Failure(ExitCode::kUsage,
                Format("{}: a subcommand is missing: {}", Joined(words.command), next),
                HelpHint(words.command));
}

// An ignored option would make its user believe that it has an effect, so it is rejected.
void CheckRefused(const CommandDescription& command, const GivenOptions& given) {
  for (const RefusedOption& option : command.refused) {
    if (given.Has(option.name)) {
      throw Failure(
          ExitCode::kUsage,
          Format("{}: does not apply to {}, {}", option.name, Joined(command.words), option.why),
          HelpHint(command.words));
    }
  }
}

class MissingOption : public Failure {
 public:
  using Failure::Failure;
};

// Passes the values of each option to its rule.
template <typename Target, typename Stores>
void Store(Target& target, const Stores& stores, const std::vector<OptionDescription>& options,
           const std::vector<std::vector<std::string>>& values,
           const std::vector<std::string>& command) {
  for (std::size_t i = 0; i < options.size(); ++i) {
    const std::string& name = options[i].names.back();
    const bool flag = !options[i].positional && options[i].value.empty();
    if (values[i].size() > 1 && !options[i].repeated && !flag) {
      throw Failure(ExitCode::kUsage, Format("{}: is given more than once", name),
                    HelpHint(command));
    }
    if (values[i].empty() && options[i].required) {
      throw MissingOption(ExitCode::kUsage,
                          Format("{}: {} is missing: {}", Joined(command), name, options[i].text),
                          HelpHint(command));
    }
    for (const std::string& text : values[i]) {
      try {
        stores[i](target, text);
      } catch (const WrongValue& wrong) {
        throw Failure(ExitCode::kUsage, Format("{}: {} {}", name, Quoted(text), wrong.what()),
                      HelpHint(command));
      }
    }
  }
}

// The words of the command itself.
GivenWords WordsOf(const SortedWords& sorted) {
  GivenWords words{sorted.command, {}, {}};
  for (std::size_t i = 0; i < sorted.own.size(); ++i) {
    const OptionDescription& option = sorted.described->options[i];
    for (const std::string& value : sorted.own[i]) {
      if (option.positional) {
        words.arguments.push_back(value);
        continue;
      }
      words.options.push_back(option.value.empty() ? option.names.back()
                                                   : Format("{}={}", option.names.back(), value));
    }
  }
  return words;
}

const CommandRule& RuleFor(const SortedWords& words, const CommandRules& rules) {
  return *std::find_if(rules.begin(), rules.end(), [&](const CommandRule& rule) {
    return rule.description.words == words.command;
  });
}

// Parses the values of a command line. Throws Failure and WrongUse.
Arguments Values(const ToolDescription& tool, const CommandRule& rule, const SortedWords& sorted) {
  Arguments arguments;
  Store(arguments.common, AllCommonRules().store, tool.common, sorted.common, sorted.command);
  arguments.words = Joined(sorted.command);
  const std::shared_ptr<Command> command = rule.make();
  arguments.command = command;
  Store(*command, rule.store, rule.description.options, sorted.own, sorted.command);
  if (arguments.common.quiet && arguments.common.verbose) {
    throw WrongUse("--quiet: contradicts --verbose");
  }
  rule.check(*command, Given(tool, sorted));
  return arguments;
}

bool IsGood(const ToolDescription& tool, const CommandRule& rule, const SortedWords& sorted) {
  try {
    Values(tool, rule, sorted);
    return true;
  } catch (const WrongUse&) {
    return false;
  } catch (const Failure&) {
    return false;
  }
}

ToolDescription DescriptionOf(const CommandRules& rules) {
  ToolDescription tool;
  tool.text = "registers, sensor and flash inside USB cameras";
  tool.common = AllCommonRules().options;
  for (const CommandRule& rule : rules) {
    tool.commands.push_back(rule.description);
  }
  return tool;
}

}  // namespace

ToolDescription DescribeTool() {
  return DescriptionOf(AllCommandRules());
}

const OptionDescription* FindOption(const std::vector<OptionDescription>& options,
                                    const std::string& name) {
  for (const OptionDescription& option : options) {
    if (!option.positional && std::ranges::find(option.names, name) != option.names.end()) {
      return &option;
    }
  }
  return nullptr;
}

std::vector<OptionDescription> CommonOptionsOf(const ToolDescription& tool,
                                               const CommandDescription& command) {
  std::vector<OptionDescription> options;
  std::copy_if(tool.common.begin(), tool.common.end(), std::back_inserter(options),
               [&](const OptionDescription& option) {
                 return std::none_of(command.refused.begin(), command.refused.end(),
                                     [&](const RefusedOption& refused) {
                                       return refused.name == option.names.back();
                                     });
               });
  return options;
}

std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words) {
  return ParseCommandLine(words, AllCommandRules());
}

std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const CommandRules& rules) {
  return ParseCommandLine(words, rules, nullptr);
}

std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const DefaultsSource& defaults) {
  return ParseCommandLine(words, AllCommandRules(), defaults);
}

std::variant<Arguments, TextAnswer> ParseCommandLine(const std::vector<std::string>& words,
                                                     const CommandRules& rules,
                                                     const DefaultsSource& defaults) {
  const ToolDescription tool = DescriptionOf(rules);
  SortedWords sorted = SortWords(tool, words);
  const Given given(tool, sorted);
  if (given.Has("--help")) {
    return TextAnswer{HelpText(tool, sorted.command)};
  }
  if (given.Has("--version")) {
    return TextAnswer{Format("borvanusb {}\n", kToolVersion)};
  }
  if (!sorted.strange.empty()) {
    RefuseStrange(tool, sorted);
  }
  if (sorted.described == nullptr) {
    RefuseUnfinished(tool, sorted);
  }
  const CommandRule& rule = RuleFor(sorted, rules);
  CheckRefused(rule.description, given);
  const bool takes_profile =
      Takes(rule.description, "--profile") && Takes(rule.description, "--camera");
  const GivenWords given_words = WordsOf(sorted);
  DefaultOptions defaulted(tool, rule, sorted, [&] { return IsGood(tool, rule, sorted); });
  if (defaults && takes_profile) {
    CommonArguments common;
    Store(common, AllCommonRules().store, tool.common, sorted.common, sorted.command);
    defaulted.Fill(defaults(common));
  }
  try {
    Arguments arguments = Values(tool, rule, sorted);
    arguments.takes_profile = takes_profile;
    arguments.common.words = given_words;
    arguments.common.defaulted = defaulted.Names();
    arguments.defaults_file = defaulted.From().file;
    return arguments;
  } catch (const MissingOption& missing) {
    const auto& why = defaulted.From().failure;
    throw Failure(
        missing.Code(), missing.Message(),
        why ? Format("{}\nNo profile was asked for its default: {}", missing.Hint(), why->Message())
            : missing.Hint());
  } catch (const WrongUse& wrong) {
    throw Failure(ExitCode::kUsage, wrong.what(), HintOf(wrong, words, sorted.command));
  }
}

}  // namespace borvanusb
