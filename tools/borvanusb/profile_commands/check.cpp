// The command `profile check`.

#include "profile_commands/check.h"

#include <nlohmann/json.hpp>

#include "base/files.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/text_command.h"
#include "command/values.h"
#include "output/output.h"
#include "profile/read_profile.h"
#include "profile_commands/check_profile.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

std::string ProblemText(const std::string& file, const ListProblem& problem) {
  return Format("{}{}: {}", file, problem.line == 0 ? "" : Format(":{}", problem.line),
                problem.text);
}

Json ProblemsJson(const std::vector<ListProblem>& problems) {
  Json list = Json::array();
  for (const ListProblem& problem : problems) {
    list.push_back({{"line", problem.line}, {"message", problem.text}});
  }
  return list;
}

std::uint64_t RegistersOf(const CameraProfile& profile) {
  std::uint64_t registers = 0;
  for (const ProfileMap& map : profile.maps) {
    registers += map.map->registers.size();
  }
  return registers;
}

}  // namespace

ExitCode Run(const ProfileCheckCommand& command, Context& context) {
  const std::string text = ReadWholeText(command.file);
  const auto reading = std::make_shared<const ProfileReading>(
      ReadProfileText(text, AbsoluteName(command.file), ReadWholeText));
  const ProfileFindings findings = CheckProfile(text, reading, ReadWholeText, AllCommandRules());
  for (const ListProblem& error : findings.errors) {
    context.output.Line(ProblemText(command.file, error));
  }
  for (const ListProblem& remark : findings.remarks) {
    context.output.Note(Format("note: {}", ProblemText(command.file, remark)));
  }
  const CameraProfile& profile = reading->profile;
  context.result = {{"file", profile.file},
                    {"name", profile.name},
                    {"errors", ProblemsJson(findings.errors)},
                    {"remarks", ProblemsJson(findings.remarks)},
                    {"counts",
                     {{"maps", profile.maps.size()},
                      {"registers", RegistersOf(profile)},
                      {"regions", profile.flash.regions.size()},
                      {"presets", profile.presets.size()}}}};
  if (!findings.errors.empty()) {
    if (!reading->errors.empty()) {
      context.output.Note(
          "note: names, presets and options are checked when these errors are corrected");
    }
    TellOutcome(context, "profile check",
                Format("{}: {}", command.file, Count(findings.errors.size(), "error")));
    return ExitCode::kFile;
  }
  context.output.Line(Format(
      "{}: good: {}, {}, {}, {}", command.file, Count(profile.maps.size(), "map"),
      Count(RegistersOf(profile), "register"), Count(profile.flash.regions.size(), "flash region"),
      Count(profile.presets.size(), "preset")));
  return ExitCode::kDone;
}

CommandRule ProfileCheckRule() {
  RuleOf<ProfileCheckCommand> rule({"profile", "check"},
                                   "Shows what is wrong with a camera profile.");
  rule.Add(File(Argument("FILE", "the profile, *.camera.json")),
           [](ProfileCheckCommand& command, const std::string& text) {
             command.file = FileValue(text);
           });
  rule.Details(
      "It also checks the maps and list files that the profile names, presets against the names of "
      "registers, and defaults against the tool's options. The exit code is 5 if there is an "
      "error; remarks are not errors.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb profile check module.camera.json");
  return rule.Take();
}

}  // namespace borvanusb
