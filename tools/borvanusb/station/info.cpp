#include <nlohmann/json.hpp>

#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/values.h"
#include "output/output.h"
#include "profile/profile_choice.h"
#include "station/info.h"
#include "station/info_flash_size.h"

namespace borvanusb {

namespace {

void TellFeatures(std::uint32_t value, Context& context) {
  const bool fast = (value & kFeatureFastI2c) != 0;
  context.output.Line(Format("feature register  {} = {}", Hex(kFeatureRegister, 4), Hex(value, 2)));
  context.output.Line(Format("I2C lists         {}",
                             fast ? "fast: in packets of up to 56 registers (bit 0x20 is set)"
                                  : "slow: three commands a register (bit 0x20 is not set)"));
  context.result["feature_register"] = value;
  context.result["fast_i2c"] = fast;
}

// The profile that the camera uses. Null if it has none, or if several match equally well.
std::shared_ptr<const CameraProfile> TellProfile(const CameraIdentity& camera, Context& context) {
  std::shared_ptr<const CameraProfile> profile;
  if (!GivenProfile(context.common, context.host).empty()) {
    profile = ProfileFor(camera, context);
  } else {
    const FolderMatch match = MatchInFolder(camera, context.host);
    if (!match.equal.empty()) {
      context.output.Line(Format("profile           ambiguous: {} and {} fit equally well",
                                 match.best->file, match.equal.front()));
    } else {
      profile = match.best;
    }
  }
  if (profile != nullptr) {
    context.output.Line(Format("profile           {}, {}", profile->name, profile->file));
  }
  context.result["profile"] =
      profile != nullptr ? nlohmann::ordered_json{{"file", profile->file}, {"name", profile->name}}
                         : nlohmann::ordered_json();
  return profile;
}

FlashSizeAnswer FlashSizeOf(Camera& camera, std::optional<std::uint64_t> told,
                            const CameraProfile* profile) {
  if (!told && profile != nullptr && profile->flash.size) {
    return {profile->flash.size, "from the profile"};
  }
  return AskFlashSize(camera, told);
}

void TellFlashSize(const FlashSizeAnswer& size, Context& context) {
  context.output.Line(Format("flash size        {}",
                             size.bytes ? Format("{}, {}", SizeText(*size.bytes), size.how)
                                        : Format("{}; set it with --flash-size", size.how)));
  context.result["flash"] = {
      {"size", size.bytes ? nlohmann::ordered_json(*size.bytes) : nlohmann::ordered_json()},
      {"how", size.how}};
}

// The summary of one camera among several.
std::string InfoSummary(const nlohmann::ordered_json& result) {
  const nlohmann::ordered_json& size = result.at("flash").at("size");
  return Format("feature register {}, {} I2C lists, flash {}",
                Hex(result.value("feature_register", 0U), 2),
                result.value("fast_i2c", false) ? "fast" : "slow",
                size.is_number() ? SizeText(size.get<std::uint64_t>()) : "of unknown size");
}

}  // namespace

ExitCode Run(const InfoCommand& command, Context& context) {
  if (IsForSeveral(command.all, context)) {
    const auto words = [&](const CameraIdentity&) { return WordsForOne(context.common.words); };
    return RunForSeveral({words, InfoSummary, false}, command.all, context);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  // Printed before accessing the camera, so that the known facts appear even if it does not answer.
  context.output.Line(Format("camera            {}", CameraLine(identity)));
  context.output.Line(Format("path              {}", identity.path));
  context.result = {{"camera", CameraJson(identity)}};
  const auto profile = TellProfile(identity, context);
  const auto camera = context.host.OpenCamera(identity);
  const std::uint32_t features = camera->ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  context.output.Line("vendor unit       answers");
  TellFeatures(features, context);
  TellFlashSize(FlashSizeOf(*camera, command.flash_size, profile.get()), context);
  return ExitCode::kDone;
}

CommandRule InfoRule() {
  RuleOf<InfoCommand> rule({"info"}, "Shows identity, vendor unit and flash size of a camera.");
  rule.Add(Option("--flash-size", "SIZE", "size of the flash if it is unknown, such as 1M"),
           [](InfoCommand& command, const std::string& text) {
             command.flash_size = FlashSizeValue(text);
           });
  AddAll(rule);
  rule.Check(
      [](const InfoCommand& command, const GivenOptions& given) { CheckAll(command.all, given); });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb info --camera 1234:0001");
  return rule.Take();
}

}  // namespace borvanusb
