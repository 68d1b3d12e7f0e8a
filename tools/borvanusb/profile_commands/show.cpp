// The command `profile show`.

#include "profile_commands/show.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"
#include "camera/camera_choice.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "output/columns.h"
#include "output/output.h"
#include "profile/profile_choice.h"
#include "profile/profile_fit.h"
#include "profile/profile_folder.h"
#include "profile_commands/profile_text.h"

namespace borvanusb {

namespace {

std::shared_ptr<const CameraProfile> ProfileOf(const ProfileShowCommand& command,
                                               Context& context) {
  if (!command.file.empty()) {
    return LoadProfile(command.file);
  }
  const std::string given = GivenProfile(context.common, context.host);
  if (!given.empty() && context.common.cameras.empty()) {
    return LoadProfile(given);
  }
  const CameraIdentity camera = ChosenCamera(context.host, context.common.cameras);
  auto profile = ProfileFor(camera, context);
  if (profile == nullptr) {
    const std::string folder = ProfileFolder(context.host);
    throw Failure(
        ExitCode::kUsage, Format("camera {} has no profile", camera.name),
        Format("Give one with --profile FILE{}; borvanusb profile new FILE writes a first one.",
               folder.empty() ? "" : Format(", or put it into {}", folder)));
  }
  return profile;
}

// Prints rows of two cells below a headline.
void PrintRows(const std::string& headline,
               const std::vector<std::pair<std::string, std::string>>& rows, Output& output) {
  if (rows.empty()) {
    return;
  }
  output.Line(headline);
  std::size_t columns = 0;
  for (const auto& [name, text] : rows) {
    columns = std::max(columns, ColumnsOf(name));
  }
  for (const auto& [name, text] : rows) {
    output.Line(text.empty() ? Format("  {}", name)
                             : Format("  {}  {}", Padded(name, columns), text));
  }
}

void PrintMaps(const CameraProfile& profile, Output& output) {
  std::vector<std::pair<std::string, std::string>> rows;
  for (const ProfileMap& map : profile.maps) {
    rows.emplace_back(
        BareName(map.file),
        Format("{}, {}{}", DeviceText(map), Count(map.map->registers.size(), "register"),
               map.prefix.empty() ? "" : Format(", as {}.*", map.prefix)));
  }
  PrintRows("register maps", rows, output);
}

void PrintFlash(const FlashLayout& flash, Output& output) {
  std::vector<std::pair<std::string, std::string>> rows;
  for (const FlashRegion& region : flash.regions) {
    rows.emplace_back(
        region.name, Format("{}, {}{}{}{}", Text(region.range), SizeText(region.range.Size()),
                            region.read_only ? ", read-only" : "",
                            region.name == flash.image_region ? ", for images without a place" : "",
                            region.description.empty() ? "" : Format("; {}", region.description)));
  }
  PrintRows(flash.size ? Format("flash, {}", SizeText(*flash.size)) : "flash", rows, output);
  if (rows.empty() && flash.size) {
    output.Line(Format("flash, {}", SizeText(*flash.size)));
  }
}

void PrintPresets(const CameraProfile& profile, Output& output) {
  std::vector<std::pair<std::string, std::string>> rows;
  for (const ProfilePreset& preset : profile.presets) {
    const std::string what = preset.file.empty() ? Count(preset.settings.size(), "setting")
                                                 : Format("list {}", BareName(preset.file));
    rows.emplace_back(
        preset.name,
        Format("{}{}", what, preset.description.empty() ? "" : Format("; {}", preset.description)));
  }
  PrintRows("presets", rows, output);
}

}  // namespace

ExitCode Run(const ProfileShowCommand& command, Context& context) {
  const auto profile = ProfileOf(command, context);
  Output& output = context.output;
  output.Line(profile->name);
  if (!profile->description.empty()) {
    output.Line(Format("  {}", profile->description));
  }
  output.Line(Format("  file     {}", profile->file));
  output.Line(Format("  cameras  {}", CamerasText(*profile)));
  PrintMaps(*profile, output);
  PrintFlash(profile->flash, output);
  PrintPresets(*profile, output);
  PrintRows("defaults of options", profile->options, output);
  context.result = ProfileJson(*profile);
  return ExitCode::kDone;
}

CommandRule ProfileShowRule() {
  RuleOf<ProfileShowCommand> rule({"profile", "show"}, "Shows the content of a camera profile.");
  rule.Add(
      File(Optional(Argument("FILE", "the profile; default: that of --profile or of the camera"))),
      [](ProfileShowCommand& command, const std::string& text) { command.file = FileValue(text); });
  rule.Check([](const ProfileShowCommand& command, const GivenOptions& given) {
    for (const char* const option : {"--camera", "--profile", "--force-profile"}) {
      if (!command.file.empty() && given.Has(option)) {
        throw WrongUse(Format("{}: does not apply to a FILE, which is shown as it is", option));
      }
    }
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--trace", "which makes no transfers");
  rule.Example("borvanusb profile show");
  rule.Example("borvanusb profile show module.camera.json");
  return rule.Take();
}

}  // namespace borvanusb
