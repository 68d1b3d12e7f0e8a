#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "i2c/i2c_options.h"
#include "output/output.h"
#include "output/progress.h"
#include "station/selftest.h"
#include "station/selftest_checks.h"

namespace borvanusb {

namespace {

enum class Verdict { kPass, kFail, kSkip };

struct Outcome {
  Verdict verdict = Verdict::kPass;
  std::string why;
  ExitCode code = ExitCode::kDone;
};

const char* NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kPass:
      return "pass";
    case Verdict::kFail:
      return "fail";
    case Verdict::kSkip:
      return "skip";
  }
  return "";
}

Outcome Try(const SelftestCheck& check) {
  if (!check.skip_reason.empty()) {
    return {Verdict::kSkip, check.skip_reason, ExitCode::kDone};
  }
  try {
    const std::string why = check.run();
    return why.empty() ? Outcome{} : Outcome{Verdict::kFail, why, ExitCode::kVerify};
  } catch (const Failure& failure) {
    if (failure.Code() == ExitCode::kStopped) {
      throw;
    }
    return {Verdict::kFail, failure.Message(), failure.Code()};
  }
}

void Print(const SelftestCheck& check, const Outcome& outcome, Context& context) {
  const bool skipped = outcome.verdict == Verdict::kSkip;
  context.output.Line(Format("{}  {}{}", NameOf(outcome.verdict), check.name,
                             skipped ? Format(" ({})", outcome.why) : ""));
  if (outcome.verdict == Verdict::kFail) {
    context.output.Line(Format("      {}", outcome.why));
  }
  context.result["tests"].push_back(
      {{"name", check.name},
       {"result", NameOf(outcome.verdict)},
       {"why",
        outcome.why.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(outcome.why)}});
}

}  // namespace

ExitCode Run(const SelftestCommand& command, Context& context) {
  const std::optional<I2cTarget> target =
      command.i2c.slave ? std::optional(TargetOf(command.i2c)) : std::nullopt;
  const ReservedCamera camera = ReserveChosenCamera(context);
  std::vector<SelftestCheck> checks = SelftestChecks(*camera.camera, target);
  std::vector<Outcome> outcomes;
  context.progress.Begin("test", checks.size(), ProgressUnit::kTests);
  for (SelftestCheck& check : checks) {
    // If the first check fails, the others can't succeed, and each would wait for its timeout.
    if (!outcomes.empty() && outcomes.front().verdict == Verdict::kFail) {
      check.skip_reason = "the vendor unit does not answer";
    }
    outcomes.push_back(Try(check));
    context.progress.Advance(outcomes.size());
  }
  context.progress.Done();

  context.output.Line(CameraLine(camera->Identity()));
  context.result = {{"camera", CameraJson(camera->Identity())},
                    {"tests", nlohmann::ordered_json::array()}};
  ExitCode worst = ExitCode::kDone;
  for (std::size_t i = 0; i < checks.size(); ++i) {
    Print(checks[i], outcomes[i], context);
    worst = std::max(worst, outcomes[i].code);
  }
  const auto count = [&](Verdict verdict) {
    return static_cast<std::uint64_t>(
        std::count_if(outcomes.begin(), outcomes.end(),
                      [&](const Outcome& outcome) { return outcome.verdict == verdict; }));
  };
  context.output.Line(Format("{} passed, {} failed, {} skipped", count(Verdict::kPass),
                             count(Verdict::kFail), count(Verdict::kSkip)));
  context.result["passed"] = count(Verdict::kPass);
  context.result["failed"] = count(Verdict::kFail);
  context.result["skipped"] = count(Verdict::kSkip);
  if (worst != ExitCode::kDone) {
    TellOutcome(context, "selftest", Format("{} failed", Count(count(Verdict::kFail), "test")));
  }
  return worst;
}

CommandRule SelftestRule() {
  RuleOf<SelftestCommand> rule({"selftest"}, "Runs all tests that change nothing.");
  AddSlave(rule, false);
  AddMode(rule);
  rule.Check([](const SelftestCommand& command, const GivenOptions& given) {
    if (given.Has("--mode") && !command.i2c.slave) {
      throw WrongUse("--mode: describes a sensor's registers; needs --slave, the sensor's address");
    }
  });
  rule.Details(
      "Prints a table of what passed, failed and was skipped. The exit status is that of the worst "
      "failure. With --slave it tests the sensor, too.");
  rule.Example("borvanusb selftest --slave 0x6c --mode 16/8");
  return rule.Take();
}

}  // namespace borvanusb
