#pragma once

// Script lines that are not commands of the tool: pauses, conditions, questions.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/exit_code.h"
#include "command/command_rules.h"

namespace borvanusb {

struct Context;

// The operators of a condition.
enum class Comparison { kEqual, kDifferent, kLess, kAtMost, kGreater, kAtLeast };

// A condition: "0x1a3&0x20 == 0x20".
struct Condition {
  std::string what;                   // an operand, see station/operand.h
  std::optional<std::uint32_t> mask;  // bits to compare
  Comparison comparison = Comparison::kEqual;
  std::string value;  // a number, or the name of a field's value
};

struct SleepCommand {
  std::chrono::milliseconds time{0};
};

struct WaitCommand {
  Condition condition;
  std::chrono::milliseconds limit{10000};
};

struct ExpectCommand {
  Condition condition;
};

struct AskCommand {
  std::string question;
};

ExitCode Run(const SleepCommand& command, Context& context);
// Throws Failure kTimeout if the condition does not become true in time, and kDevice if the value
// could not be read at the end.
ExitCode Run(const WaitCommand& command, Context& context);
ExitCode Run(const ExpectCommand& command, Context& context);
// Throws Failure kStopped unless the user answers yes.
ExitCode Run(const AskCommand& command, Context& context);

// The rules of only these lines.
const CommandRules& ScriptOnlyRules();
// Parses a line at the prompt: a script line, a command of the tool, or --help. Throws Failure
// kUsage.
std::variant<Arguments, TextAnswer> ParseLine(const std::vector<std::string>& words,
                                              const DefaultsSource& defaults);
// Parses a line of a script: a script line, or a command of the tool. Throws Failure kUsage.
Arguments ParseScriptLine(const std::vector<std::string>& words, const DefaultsSource& defaults);

}  // namespace borvanusb
