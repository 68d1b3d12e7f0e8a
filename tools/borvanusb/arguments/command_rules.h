#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "arguments/arguments.h"
#include "arguments/command_line.h"

// Each command in one place: what help tells of it, and how its words become values. Help, manual
// page, completions and the reading of command lines all come from here.

// How often an option was given.
class GivenOptions {
 public:
  virtual ~GivenOptions() = default;
  // `name` is one of the command's own or common options; anything else throws std::logic_error.
  virtual std::size_t Count(const std::string& name) const = 0;
  bool Has(const std::string& name) const { return Count(name) > 0; }
};

// Refuses a command line whose words are fine one by one but not together: one line.
class WrongUse : public std::exception {
 public:
  explicit WrongUse(std::string why) : why_(std::move(why)) {}
  const char* what() const noexcept override { return why_.c_str(); }

 private:
  std::string why_;
};

struct CommandRule {
  CommandDescription description;
  Command initial;
  // One for each option of the description, in their order. Throws WrongValue.
  std::vector<std::function<void(Command&, const std::string&)>> store;
  // Looks at the whole. Throws WrongUse.
  std::function<void(const Command&, const GivenOptions&)> check;
};

struct CommonRules {
  std::vector<OptionDescription> options;
  std::vector<std::function<void(CommonArguments&, const std::string&)>> store;
};

// Options in the making.
inline OptionDescription Argument(std::string name, std::string text) {
  OptionDescription option;
  option.names = {std::move(name)};
  option.text = std::move(text);
  option.positional = true;
  option.required = true;
  return option;
}

inline OptionDescription Flag(std::string name, std::string text) {
  OptionDescription option;
  option.names = {std::move(name)};
  option.text = std::move(text);
  return option;
}

inline OptionDescription Option(std::string name, std::string value, std::string text) {
  OptionDescription option = Flag(std::move(name), std::move(text));
  option.value = std::move(value);
  return option;
}

inline OptionDescription Optional(OptionDescription option) {
  option.required = false;
  return option;
}

inline OptionDescription Required(OptionDescription option) {
  option.required = true;
  return option;
}

inline OptionDescription Repeated(OptionDescription option) {
  option.repeated = true;
  return option;
}

inline OptionDescription File(OptionDescription option) {
  option.takes_file = true;
  return option;
}

inline OptionDescription Choices(OptionDescription option, std::vector<std::string> choices) {
  option.choices = std::move(choices);
  return option;
}

// Puts together the rule of the command whose values are a C.
template <typename C>
class RuleOf {
 public:
  RuleOf(std::vector<std::string> words, std::string text) {
    rule_.description.words = std::move(words);
    rule_.description.text = std::move(text);
    rule_.initial = C{};
    rule_.check = [](const Command&, const GivenOptions&) {};
  }

  void Add(OptionDescription option, std::function<void(C&, const std::string&)> store) {
    rule_.description.options.push_back(std::move(option));
    rule_.store.push_back([store = std::move(store)](Command& command, const std::string& text) {
      store(std::get<C>(command), text);
    });
  }

  void AddFlag(std::string name, std::string text, bool C::*flag) {
    Add(Flag(std::move(name), std::move(text)),
        [flag](C& command, const std::string&) { command.*flag = true; });
  }

  void Details(std::string details) { rule_.description.details = std::move(details); }

  void Example(std::string line) { rule_.description.examples.push_back(std::move(line)); }

  void Check(std::function<void(const C&, const GivenOptions&)> check) {
    rule_.check = [check = std::move(check)](const Command& command, const GivenOptions& given) {
      check(std::get<C>(command), given);
    };
  }

  CommandRule Take() { return std::move(rule_); }

 private:
  CommandRule rule_;
};

using CommandRules = std::vector<CommandRule>;

// The groups, each in the order of the help.
CommandRules CameraRules();
CommandRules RegisterRules();
CommandRules I2cRules();
CommandRules FlashRules();
CommandRules MeasuringRules();
CommandRules AutomationRules();
CommonRules MakeCommonRules();

// All of them.
const CommandRules& AllCommandRules();
const CommonRules& AllCommonRules();

// Throws WrongUse when a value, mask or address is beyond its bits: "VALUE: 0x1ff is too big for
// …".
void CheckFits(const std::string& name, std::uint32_t number, int bits, const std::string& where);
