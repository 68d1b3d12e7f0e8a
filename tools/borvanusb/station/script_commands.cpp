#include "station/script_commands.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <variant>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/context.h"
#include "command/values.h"
#include "output/output.h"
#include "station/operand.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Fast enough for users, and slow enough not to disturb the camera.
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
    throw WrongValue("is not a valid comparison: ==, !=, <, <=, > or >=");
  }
  return found->comparison;
}

bool Holds(Comparison comparison, std::uint64_t found, std::uint64_t expected) {
  switch (comparison) {
    case Comparison::kEqual:
      return found == expected;
    case Comparison::kDifferent:
      return found != expected;
    case Comparison::kLess:
      return found < expected;
    case Comparison::kAtMost:
      return found <= expected;
    case Comparison::kGreater:
      return found > expected;
    case Comparison::kAtLeast:
      return found >= expected;
  }
  return false;
}

// A condition for a certain camera.
struct Question {
  const Condition& condition;
  Operand operand;
  std::uint64_t expected = 0;
};

Question AskAbout(const Condition& condition, const CameraIdentity& camera, Context& context) {
  Question question{condition, ResolveOperand(condition.what, camera, context), 0};
  question.expected = ValueOf(question.operand, condition.value);
  return question;
}

// The result of reading the value.
struct Finding {
  std::uint64_t value = 0;
  std::uint64_t compared = 0;  // after applying the mask
  bool met = false;
};

Finding Look(const Question& question, Camera& camera) {
  Finding finding;
  finding.value = ReadOperand(question.operand, camera);
  finding.compared =
      question.condition.mask ? finding.value & *question.condition.mask : finding.value;
  finding.met = Holds(question.condition.comparison, finding.compared, question.expected);
  return finding;
}

std::string WantedText(const Question& question) {
  return Format("{} {}", TextOf(question.condition.comparison),
                ValueText(question.operand, question.expected));
}

// "register 0x01a3 holds 0x21, with mask 0x20 that is 0x20".
std::string FoundText(const Question& question, const Finding& finding) {
  const std::string found =
      Format("{} holds {}", question.operand.name, ValueText(question.operand, finding.value));
  const auto& mask = question.condition.mask;
  return mask ? Format("{}, which is {} with mask {}", found,
                       ValueText(question.operand, finding.compared),
                       ValueText(question.operand, *mask))
              : found;
}

Json ResultJson(const Question& question, const Finding& finding) {
  const Condition& condition = question.condition;
  return {{"what", condition.what},
          {"mask", condition.mask ? Json(*condition.mask) : Json()},
          {"comparison", TextOf(condition.comparison)},
          {"expected", question.expected},
          {"value", finding.value},
          {"met", finding.met}};
}

std::string SecondsText(std::chrono::milliseconds time) {
  return Format("{} s", static_cast<double>(time.count()) / kMillisecondsPerSecond);
}

template <typename C>
void AddCondition(RuleOf<C>& rule) {
  rule.Add(Argument("WHAT",
                    "a name of the profile, 0x1a3, wide:0x1a3 or i2c:SLAVE:ADDR[:MODE]; &MASK may "
                    "follow"),
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
  rule.Add(Argument("VALUE", "the number to compare with, or the name of a field's value"),
           [](C& command, const std::string& text) {
             if (!IsNamedOperand(command.condition.what)) {
               WordValue(text);
             }
             command.condition.value = text;
           });
  rule.Check([](const C& command, const GivenOptions&) {
    const Condition& condition = command.condition;
    if (IsNamedOperand(condition.what)) {
      return;
    }
    const int bits = CheckOperand(condition.what);
    CheckFits("VALUE", WordValue(condition.value), bits,
              Format("the values of {}", condition.what));
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
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const Question question = AskAbout(command.condition, identity, context);
  const auto camera = context.host.OpenCamera(identity);
  const auto begin = context.host.Clock();
  while (true) {
    std::optional<Failure> unread;
    std::optional<Finding> finding;
    try {
      finding = Look(question, *camera);
    } catch (const Failure& failure) {
      // A sensor does not answer just after a reset, so this is not an error yet.
      if (failure.Code() != ExitCode::kDevice) {
        throw;
      }
      unread = failure;
    }
    if (finding && finding->met) {
      context.output.Line(FoundText(question, *finding));
      context.result = ResultJson(question, *finding);
      return ExitCode::kDone;
    }
    if (context.host.Clock() - begin >= command.limit) {
      if (unread) {
        throw Failure(unread->Code(),
                      Format("{}; waited {} for it", unread->Message(), SecondsText(command.limit)),
                      unread->Hint());
      }
      throw Failure(ExitCode::kTimeout,
                    Format("{}; waited {} for {}", FoundText(question, *finding),
                           SecondsText(command.limit), WantedText(question)),
                    "Check what should change the value, or wait longer with --timeout.");
    }
    context.host.Sleep(kPollInterval);
    if (context.host.StopRequested()) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
  }
}

ExitCode Run(const ExpectCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const Question question = AskAbout(command.condition, identity, context);
  const auto camera = context.host.OpenCamera(identity);
  const Finding finding = Look(question, *camera);
  context.result = ResultJson(question, finding);
  if (!finding.met) {
    TellOutcome(context, "expect",
                Format("{}; expected {}", FoundText(question, finding), WantedText(question)));
    return ExitCode::kVerify;
  }
  context.output.Line(FoundText(question, finding));
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

// The rules of the tool's commands and the additional script lines.
const CommandRules& LineRules() {
  static const CommandRules kRules = [] {
    CommandRules rules = AllCommandRules();
    rules.insert(rules.end(), ScriptOnlyRules().begin(), ScriptOnlyRules().end());
    return rules;
  }();
  return kRules;
}

}  // namespace

std::variant<Arguments, TextAnswer> ParseLine(const std::vector<std::string>& words,
                                              const DefaultsSource& defaults) {
  try {
    return ParseCommandLine(words, LineRules(), defaults);
  } catch (const Failure& failure) {
    if (!IsScriptOnly(words.front())) {
      throw;
    }
    // The additional script lines have no --help.
    throw Failure(failure.Code(), failure.Message(), "borvanusb run --help shows these lines.");
  }
}

Arguments ParseScriptLine(const std::vector<std::string>& words, const DefaultsSource& defaults) {
  auto parsed = ParseLine(words, defaults);
  if (std::holds_alternative<Arguments>(parsed)) {
    return std::get<Arguments>(std::move(parsed));
  }
  throw Failure(ExitCode::kUsage, "--help and --version are not commands of a script",
                "Remove the line.");
}

}  // namespace borvanusb
