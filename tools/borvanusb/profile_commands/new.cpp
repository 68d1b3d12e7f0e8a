// The command `profile new`.

#include "profile_commands/new.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/time_text.h"
#include "base/width_modes.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "i2c/scan.h"
#include "output/output.h"
#include "profile/profile_folder.h"
#include "profile_commands/first_profile.h"
#include "station/info_flash_size.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kEnding = ".camera.json";

void RequireNew(const ProfileNewCommand& command) {
  if (!command.force && FileExists(command.file)) {
    throw Failure(ExitCode::kFile, Format("{} exists already", command.file),
                  "Give another name. With --force the file is replaced.");
  }
}

void AskCamera(const ProfileNewCommand& command, CameraFacts& facts, Context& context) {
  const auto camera = context.host.OpenCamera(facts.camera);
  facts.features = camera->ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  const FlashSizeAnswer size = AskFlashSize(*camera, command.flash_size);
  facts.flash_size = size.bytes;
  facts.flash_size_reason = size.how;
}

void Scan(const ProfileNewCommand& command, CameraFacts& facts, Context& context) {
  I2cScanCommand scan;
  scan.i2c = command.i2c;
  scan.yes = command.yes;
  Json result;
  CommonArguments common = context.common;
  common.cameras = {facts.camera.path};
  Context of_scan{common, context.host, context.output, context.progress, result};
  Run(scan, of_scan);
  facts.scanned = true;
  for (const Json& answer : result["answers"]) {
    auto& devices = answer["doubt"].is_null() ? facts.devices : facts.doubtful;
    devices.push_back(answer["slave"].get<std::uint32_t>());
  }
}

Json FactsJson(const CameraFacts& facts) {
  return {{"camera", CameraJson(facts.camera)},
          {"feature_register", facts.features},
          {"flash_size", facts.flash_size ? Json(*facts.flash_size) : Json()},
          {"devices", facts.scanned ? Json(facts.devices) : Json()}};
}

void TellHowToUse(const ProfileNewCommand& command, Context& context) {
  if (!command.file.ends_with(kEnding)) {
    context.output.Note(
        Format("note: the name does not end in {}: cameras find the profile only "
               "with --profile",
               kEnding));
  }
  const std::string folder = ProfileFolder(context.host);
  context.output.Note(Format("Use it with --profile {}{}.", command.file,
                             folder.empty() ? "" : Format(", or put it into {}", folder)));
}

}  // namespace

ExitCode Run(const ProfileNewCommand& command, Context& context) {
  RequireNew(command);
  CheckWritable(command.file);
  CameraFacts facts;
  facts.camera = ChosenCamera(context.host, context.common.cameras);
  constexpr std::size_t kDate = 10;  // length of the date in "2026-11-22T19:18:05Z"
  facts.date = TimeText(context.host.Now()).substr(0, kDate);
  facts.mode = WidthModeOf(command.i2c.mode).name;
  AskCamera(command, facts, context);
  if (command.scan) {
    Scan(command, facts, context);
  }
  // Another process may have created the file in the meantime.
  RequireNew(command);
  WriteWholeText(command.file, FirstProfileText(facts));
  context.output.Line(Format("{}: a profile for {}", command.file, CameraLine(facts.camera)));
  TellHowToUse(command, context);
  context.result = FactsJson(facts);
  context.result["file"] = AbsoluteName(command.file);
  return ExitCode::kDone;
}

CommandRule ProfileNewRule() {
  RuleOf<ProfileNewCommand> rule({"profile", "new"}, "Writes a first profile for a camera.");
  rule.Add(
      File(Argument("FILE", "the new profile; cameras find names that end in .camera.json")),
      [](ProfileNewCommand& command, const std::string& text) { command.file = FileValue(text); });
  rule.AddFlag("--force", "replace the file if it exists", &ProfileNewCommand::force);
  rule.Add(Option("--flash-size", "SIZE", "size of the flash if it is unknown, such as 1M"),
           [](ProfileNewCommand& command, const std::string& text) {
             command.flash_size = FlashSizeValue(text);
           });
  rule.AddFlag("--scan", "find the devices on the I2C bus, as i2c scan does",
               &ProfileNewCommand::scan);
  AddMode(rule);
  rule.AddFlag("--yes", "don't ask before the scan", &ProfileNewCommand::yes);
  rule.Check([](const ProfileNewCommand& command, const GivenOptions& given) {
    for (const char* const option : {"--mode", "--yes"}) {
      if (!command.scan && given.Has(option)) {
        throw WrongUse(Format("{}: is for the scan of the I2C bus; --scan must be given", option));
      }
    }
  });
  rule.Details(
      "It asks the camera for its identity and the size of its flash, and writes nothing to it.");
  rule.Refuse("--profile", "which writes one");
  rule.Refuse("--force-profile", "which writes one");
  rule.Example("borvanusb profile new module.camera.json --camera 0 --scan");
  return rule.Take();
}

}  // namespace borvanusb
