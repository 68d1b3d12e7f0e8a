// The commands `preset apply` and `preset diff`.

#include "station/preset.h"

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/values.h"
#include "i2c/diff.h"
#include "i2c/load.h"
#include "names/diff_sources.h"
#include "names/presets.h"
#include "names/register_words.h"
#include "names/write_settings.h"
#include "output/output.h"
#include "registers/diff.h"
#include "registers/load.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

// Loads a preset that is a list file.
ExitCode LoadList(const ProfilePreset& preset, bool verify, Context& context) {
  if (preset.on_i2c) {
    I2cLoadCommand load;
    load.file = preset.file;
    load.verify = verify;
    return Run(load, context);
  }
  RegLoadCommand load;
  load.file = preset.file;
  load.verify = verify;
  return Run(load, context);
}

std::string PresetSummary(const nlohmann::ordered_json& result) {
  return result.contains("writes") ? Format("{} set", Count(result["writes"].size(), "register"))
                                   : std::string("set");
}

// Each camera uses the preset of its own profile.
ExitCode ApplyToSeveral(bool all, Context& context) {
  const auto words = [&](const CameraIdentity&) { return WordsForOne(context.common.words); };
  return RunForSeveral({words, PresetSummary}, all, context);
}

}  // namespace

ExitCode Run(const PresetApplyCommand& command, Context& context) {
  if (IsForSeveral(command.all, context)) {
    return ApplyToSeveral(command.all, context);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto names = NamesNeeded(identity, context);
  const ProfilePreset& preset = FindPreset(names->Profile(), command.name);
  ExitCode code = ExitCode::kDone;
  if (!preset.file.empty()) {
    code = LoadList(preset, command.verify, context);
    nlohmann::ordered_json loaded = std::move(context.result);
    context.result = {{"preset", preset.name}, {"list", std::move(loaded)}};
  } else {
    const std::vector<RegisterSetting> settings = SettingsOf(preset, *names);
    const auto reservation = context.host.ReserveCamera(identity);
    const auto camera = context.host.OpenCamera(identity);
    context.result = {{"preset", preset.name}};
    WriteSettings(settings, command.verify, *camera, context);
  }
  if (code == ExitCode::kDone) {
    context.output.Line(Format("preset \"{}\" is set", preset.name));
  }
  return code;
}

ExitCode Run(const PresetDiffCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto names = NamesNeeded(identity, context);
  const ProfilePreset& preset = FindPreset(names->Profile(), command.name);
  return CompareSides(
      "preset diff", DiffSideOf(Format("preset:{}", preset.name)), DiffSideOf("camera"),
      command.csv,
      [&](const std::string& file, const RegisterNames*) {
        return preset.on_i2c ? RegistersOfI2cList(file, {}, context)
                             : RegistersOfListFile(file, context);
      },
      context);
}

CommandRule PresetApplyRule() {
  RuleOf<PresetApplyCommand> rule({"preset", "apply"}, "Writes the settings of a preset.");
  rule.Add(
      NamesOf("presets", Argument("NAME", "a preset of the camera's profile")),
      [](PresetApplyCommand& command, const std::string& text) { command.name = FileValue(text); });
  rule.AddFlag("--verify", kVerifyText, &PresetApplyCommand::verify);
  AddAll(rule);
  rule.Check([](const PresetApplyCommand& command, const GivenOptions& given) {
    CheckAll(command.all, given);
  });
  rule.Details("Its settings are written in their order, each register once.");
  rule.Example("borvanusb preset apply night --verify");
  return rule.Take();
}

CommandRule PresetDiffRule() {
  RuleOf<PresetDiffCommand> rule({"preset", "diff"}, "Shows where a camera differs from a preset.");
  rule.Add(
      NamesOf("presets", Argument("NAME", "a preset of the camera's profile")),
      [](PresetDiffCommand& command, const std::string& text) { command.name = FileValue(text); });
  rule.Add(
      File(Option("--csv", "FILE", "write the differences to a file, too")),
      [](PresetDiffCommand& command, const std::string& text) { command.csv = FileValue(text); });
  rule.Details("Exit code 7 means that they differ.");
  rule.Example("borvanusb preset diff night");
  return rule.Take();
}

}  // namespace borvanusb
