#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/command.h"
#include "command/command_line.h"

namespace borvanusb {

// Defines each command in one place: its help text, and how its words become values. The parser,
// help, manual page and completions all use these rules.

// How often each option was given.
class GivenOptions {
 public:
  virtual ~GivenOptions() = default;
  // `name` must be one of the command's own or common options. Otherwise std::logic_error is
  // thrown.
  virtual std::size_t Count(const std::string& name) const = 0;
  bool Has(const std::string& name) const { return Count(name) > 0; }
};

// Rejects a command line whose words are valid, but not together. The text is one line.
class WrongUse : public std::exception {
 public:
  // A suggestion: the rejected command line with additional words.
  struct Way {
    std::string when;  // "If it belongs to 0x20000"
    std::vector<std::string> more;
  };

  explicit WrongUse(std::string why, std::vector<Way> ways = {})
      : why_(std::move(why)), ways_(std::move(ways)) {}
  const char* what() const noexcept override { return why_.c_str(); }
  const std::vector<Way>& Ways() const { return ways_; }

 private:
  std::string why_;
  std::vector<Way> ways_;
};

struct CommandRule {
  CommandDescription description;
  // Creates the command with its default values.
  std::function<std::shared_ptr<Command>()> make;
  // One function for each option of the description, in the same order. Throws WrongValue.
  std::vector<std::function<void(Command&, const std::string&)>> store;
  // Checks the combination of all values. Throws WrongUse.
  std::function<void(const Command&, const GivenOptions&)> check;
};

struct CommonRules {
  std::vector<OptionDescription> options;
  std::vector<std::function<void(CommonArguments&, const std::string&)>> store;
};

// Functions that build option descriptions.
OptionDescription Argument(std::string_view name, std::string_view text);
OptionDescription Flag(std::string_view name, std::string_view text);
OptionDescription Option(std::string_view name, std::string_view value, std::string_view text);
OptionDescription Optional(OptionDescription option);
OptionDescription Required(OptionDescription option);
OptionDescription Repeated(OptionDescription option);
OptionDescription File(OptionDescription option);
// An option whose values are names in a profile: "registers", "settings", "regions" or "presets".
OptionDescription NamesOf(std::string_view kind, OptionDescription option);
OptionDescription Choices(OptionDescription option, std::vector<std::string> choices);

// Builds the rule of a command with values of type C.
template <typename C>
class RuleOf {
 public:
  RuleOf(std::vector<std::string> words, std::string_view text) {
    rule_.description.words = std::move(words);
    rule_.description.text = text;
    rule_.make = [] { return std::make_shared<CommandOf<C>>(); };
    rule_.check = [](const Command&, const GivenOptions&) {};
  }

  void Add(OptionDescription option, std::function<void(C&, const std::string&)> store) {
    rule_.description.options.push_back(std::move(option));
    rule_.store.push_back([store = std::move(store)](Command& command, const std::string& text) {
      store(static_cast<CommandOf<C>&>(command).values, text);
    });
  }

  void AddFlag(std::string_view name, std::string_view text, bool C::*flag) {
    Add(Flag(name, text), [flag](C& command, const std::string&) { command.*flag = true; });
  }

  void Details(std::string_view details) { rule_.description.details = details; }

  // Marks a common option that the command does not accept.
  void Refuse(std::string_view name, std::string_view why) {
    rule_.description.refused.push_back({std::string(name), std::string(why)});
    // Without a camera, there is nothing to wait for.
    if (name == "--camera") {
      Refuse("--wait", why);
    }
  }

  void Example(std::string_view line) { rule_.description.examples.emplace_back(line); }

  void Check(std::function<void(const C&, const GivenOptions&)> check) {
    rule_.check = [check = std::move(check)](const Command& command, const GivenOptions& given) {
      check(static_cast<const CommandOf<C>&>(command).values, given);
    };
  }

  CommandRule Take() { return std::move(rule_); }

 private:
  CommandRule rule_;
};

using CommandRules = std::vector<CommandRule>;

// The reason of commands without progress for rejecting --progress.
constexpr std::string_view kNoProgress = "which shows no progress";

// All commands of the tool, in the order of the help. commands.cmake lists them.
const CommandRules& AllCommandRules();
// The options of every command.
const CommonRules& AllCommonRules();
CommonRules MakeCommonRules();

// Throws WrongUse if a value, mask or address exceeds its bits: "VALUE: 0x1ff is too big for …".
void CheckFits(const std::string& name, std::uint32_t number, int bits, const std::string& where);

}  // namespace borvanusb
