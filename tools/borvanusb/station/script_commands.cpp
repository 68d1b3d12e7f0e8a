#include "station/script_commands.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <variant>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/context.h"
#include "command/values.h"
#include "output/output.h"
#include "station/operand.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Often enough for a person, seldom enough for the camera's other work.
constexpr std::chrono::milliseconds kPollInterval{20};
constexpr double kMillisecondsPerSecond = 1000;

struct ComparisonName {
  Comparison comparison;
  std::string_view text;
};

constexpr std::array<ComparisonName, 6> kComparisons = {{{Comparison::kEqual, "=="},
                                                         {Comparison::kDifferent, "!="},
                                                         {Comparison::kLess, "<"},
                                                         {Comparison::kAtMost, "<="},
                                                         {Comparison::kGreater, ">"},
                                                         {Comparison::kAtLeast, ">="}}};

std::string_view TextOf(Comparison comparison) {
  return std::ranges::find(kComparisons, comparison, &ComparisonName::comparison)->text;
}

Comparison ComparisonValue(const std::string& text) {
  const auto* const found = std::ranges::find(kComparisons, text, &ComparisonName::text);
  if (found == kComparisons.end()) {
    throw WrongValue("is no comparison: ==, !=, <, <=, > or >=");
  }
  return found->comparison;
}

bool Holds(const Condition& condition, std::uint32_t found) {
  switch (condition.comparison) {
    case Comparison::kEqual:
      return found == condition.value;
    case Comparison::kDifferent:
      return found != condition.value;
    case Comparison::kLess:
      return found < condition.value;
    case Comparison::kAtMost:
      return found <= condition.value;
    case Comparison::kGreater:
      return found > condition.value;
    case Comparison::kAtLeast:
      return found >= condition.value;
  }
  return false;
}

// A condition and what was found for it.
struct Finding {
  OperandValue read;
  std::uint32_t compared = 0;  // with the mask
  bool met = false;
};

Finding Look(const Condition& condition, Camera& camera, Context& context) {
  Finding finding;
  finding.read = ReadOperand(condition.what, camera, context);
  finding.compared = finding.read.value & condition.mask.value_or(kHighestNumber);
  finding.met = Holds(condition, finding.compared);
  return finding;
}

std::string WantedText(const Condition& condition, int digits) {
  return Format("{} {}", TextOf(condition.comparison), Hex(condition.value, digits));
}

// "register 0x01a3 holds 0x21, with mask 0x20 that is 0x20".
std::string FoundText(const Condition& condition, const Finding& finding) {
  const int digits = finding.read.digits;
  const std::string found =
      Format("{} holds {}", finding.read.name, Hex(finding.read.value, digits));
  return condition.mask ? Format("{}, which is {} with mask {}", found,
                                 Hex(finding.compared, digits), Hex(*condition.mask, digits))
                        : found;
}

Json ResultJson(const Condition& condition, const Finding& finding) {
  return {{"what", condition.what},
          {"mask", condition.mask ? Json(*condition.mask) : Json()},
          {"comparison", TextOf(condition.comparison)},
          {"expected", condition.value},
          {"value", finding.read.value},
          {"met", finding.met}};
}

std::string SecondsText(std::chrono::milliseconds time) {
  return Format("{} s", static_cast<double>(time.count()) / kMillisecondsPerSecond);
}

template <typename C>
void AddCondition(RuleOf<C>& rule) {
  rule.Add(Argument("WHAT", "0x1a3, wide:0x1a3 or i2c:SLAVE:ADDR[:MODE]; &MASK may follow"),
           [](C& command, const std::string& text) {
             const std::size_t mark = text.find('&');
             command.condition.what = text.substr(0, mark);
             CheckOperand(command.condition.what);
             if (mark != std::string::npos) {
               command.condition.mask = WordValue(text.substr(mark + 1));
             }
           });
  rule.Add(Argument("COMPARISON", "==, !=, <, <=, > or >="),
           [](C& command, const std::string& text) {
             command.condition.comparison = ComparisonValue(text);
           });
  rule.Add(Argument("VALUE", "the number to compare with"),
           [](C& command, const std::string& text) { command.condition.value = WordValue(text); });
  rule.Check([](const C& command, const GivenOptions&) {
    const Condition& condition = command.condition;
    const int bits = CheckOperand(condition.what);
    CheckFits("VALUE", condition.value, bits, Format("the values of {}", condition.what));
    CheckFits("WHAT: the mask", condition.mask.value_or(0), bits,
              Format("the values of {}", condition.what));
  });
}

CommandRule SleepRule() {
  RuleOf<SleepCommand> rule({"sleep"}, "Waits.");
  rule.Add(Argument("TIME", "100ms, 2s"), [](SleepCommand& command, const std::string& text) {
    command.time = DurationValue(text);
  });
  rule.Refuse("--camera", "which uses no camera");
  return rule.Take();
}

CommandRule WaitRule() {
  RuleOf<WaitCommand> rule({"wait"}, "Reads a register again and again until a condition is met.");
  AddCondition(rule);
  rule.Add(
      Option("--timeout", "TIME", "how long at most, default 10s"),
      [](WaitCommand& command, const std::string& text) { command.limit = DurationValue(text); });
  return rule.Take();
}

CommandRule ExpectRule() {
  RuleOf<ExpectCommand> rule({"expect"}, "Reads a register and fails unless a condition is met.");
  AddCondition(rule);
  return rule.Take();
}

CommandRule AskRule() {
  RuleOf<AskCommand> rule({"ask"}, "Asks the user a question and stops unless it is answered yes.");
  rule.Add(Argument("QUESTION", "the question, in quotes"),
           [](AskCommand& command, const std::string& text) { command.question = text; });
  rule.Refuse("--camera", "which uses no camera");
  return rule.Take();
}

}  // namespace

ExitCode Run(const SleepCommand& command, Context& context) {
  context.host.Sleep(command.time);
  if (context.host.StopRequested()) {
    throw Failure(ExitCode::kStopped, "stopped by the user");
  }
  return ExitCode::kDone;
}

ExitCode Run(const WaitCommand& command, Context& context) {
  const auto camera = OpenChosenCamera(context);
  const auto begin = context.host.Clock();
  while (true) {
    std::optional<Failure> unread;
    std::optional<Finding> finding;
    try {
      finding = Look(command.condition, *camera, context);
    } catch (const Failure& failure) {
      // A sensor that comes out of reset does not answer yet.
      if (failure.Code() != ExitCode::kDevice) {
        throw;
      }
      unread = failure;
    }
    if (finding && finding->met) {
      context.output.Line(FoundText(command.condition, *finding));
      context.result = ResultJson(command.condition, *finding);
      return ExitCode::kDone;
    }
    if (context.host.Clock() - begin >= command.limit) {
      if (unread) {
        throw Failure(unread->Code(),
                      Format("{}; waited {} for it", unread->Message(), SecondsText(command.limit)),
                      unread->Hint());
      }
      throw Failure(
          ExitCode::kTimeout,
          Format("{}; waited {} for {}", FoundText(command.condition, *finding),
                 SecondsText(command.limit), WantedText(command.condition, finding->read.digits)),
          "Check what should change the value, or wait longer with --timeout.");
    }
    context.host.Sleep(kPollInterval);
    if (context.host.StopRequested()) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
  }
}

ExitCode Run(const ExpectCommand& command, Context& context) {
  const auto camera = OpenChosenCamera(context);
  const Finding finding = Look(command.condition, *camera, context);
  context.result = ResultJson(command.condition, finding);
  if (!finding.met) {
    TellOutcome(context, "expect",
                Format("{}; expected {}", FoundText(command.condition, finding),
                       WantedText(command.condition, finding.read.digits)));
    return ExitCode::kVerify;
  }
  context.output.Line(FoundText(command.condition, finding));
  return ExitCode::kDone;
}

ExitCode Run(const AskCommand& command, Context& context) {
  if (!context.host.Ask(command.question)) {
    throw Failure(ExitCode::kStopped,
                  Format("{} was not answered with yes", Quoted(command.question)),
                  "Answer y on the terminal to continue.");
  }
  return ExitCode::kDone;
}

const CommandRules& ScriptOnlyRules() {
  static const CommandRules kRules = {SleepRule(), WaitRule(), ExpectRule(), AskRule()};
  return kRules;
}

namespace {

bool IsScriptOnly(const std::string& word) {
  return std::ranges::any_of(ScriptOnlyRules(), [&](const CommandRule& rule) {
    return rule.description.words.front() == word;
  });
}

// The commands of the tool and the lines that only scripts have.
const CommandRules& LineRules() {
  static const CommandRules kRules = [] {
    CommandRules rules = AllCommandRules();
    rules.insert(rules.end(), ScriptOnlyRules().begin(), ScriptOnlyRules().end());
    return rules;
  }();
  return kRules;
}

}  // namespace

Arguments ParseScriptLine(const std::vector<std::string>& words, const DefaultsSource& defaults) {
  try {
    auto parsed = ParseCommandLine(words, LineRules(), defaults);
    if (std::holds_alternative<Arguments>(parsed)) {
      return std::get<Arguments>(std::move(parsed));
    }
  } catch (const Failure& failure) {
    if (!IsScriptOnly(words.front())) {
      throw;
    }
    // These lines have no --help of their own.
    throw Failure(failure.Code(), failure.Message(), "borvanusb run --help shows these lines.");
  }
  throw Failure(ExitCode::kUsage, "--help and --version are no commands of a script",
                "Remove the line.");
}

}  // namespace borvanusb
