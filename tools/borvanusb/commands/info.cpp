#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/camera_work.h"
#include "commands/commands.h"
#include "commands/info_flash_size.h"
#include "failure.h"
#include "output/output.h"

namespace {

// What keeps the vendor unit from answering is a part of the information; a wish to stop is not.
bool TellsAboutTheCamera(const Failure& failure) {
  return failure.Code() == ExitCode::kRefused || failure.Code() == ExitCode::kDevice ||
         failure.Code() == ExitCode::kTimeout;
}

void TellFeatures(std::uint32_t value, Context& context) {
  const bool fast = (value & kFeatureFastI2c) != 0;
  context.output.Line("feature register  " + Hex(kFeatureRegister, 4) + " = " + Hex(value, 2));
  context.output.Line(std::string("I2C lists         ") +
                      (fast ? "fast: in packets of up to 56 registers (bit 0x20 is set)"
                            : "slow: three commands a register (bit 0x20 is not set)"));
  context.result["feature_register"] = value;
  context.result["fast_i2c"] = fast;
}

void TellFlashSize(Camera& camera, std::optional<std::uint64_t> told, Context& context) {
  const FlashSizeAnswer size = AskFlashSize(camera, told);
  context.output.Line("flash size        " +
                      (size.bytes ? SizeText(*size.bytes) : std::string("not known")) + ", " +
                      size.how);
  context.result["flash_size"] = {
      {"bytes", size.bytes ? nlohmann::ordered_json(*size.bytes) : nlohmann::ordered_json()},
      {"how", size.how}};
}

}  // namespace

ExitCode Run(const InfoCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  context.output.Line("camera            " + CameraLine(identity));
  context.output.Line("path              " + identity.path);
  context.result = {{"camera", CameraJson(identity)},
                    {"vendor_unit", {{"answers", false}, {"problem", nullptr}}},
                    {"feature_register", nullptr},
                    {"fast_i2c", nullptr},
                    {"flash_size", nullptr}};
  try {
    const auto camera = context.host.OpenCamera(identity);
    const std::uint32_t features = camera->ReadRegister(kFeatureRegister, RegisterWidth::kByte);
    context.output.Line("vendor unit       answers");
    context.result["vendor_unit"]["answers"] = true;
    TellFeatures(features, context);
    TellFlashSize(*camera, command.flash_size, context);
  } catch (const Failure& failure) {
    if (!TellsAboutTheCamera(failure)) {
      throw;
    }
    const bool answered = context.result["vendor_unit"]["answers"];
    context.output.Line((answered ? "flash size        " : "vendor unit       ") +
                        failure.Message());
    context.result["vendor_unit"]["problem"] = failure.Message();
    if (!failure.Hint().empty()) {
      context.output.Note(failure.Hint());
    }
    return failure.Code();
  }
  return ExitCode::kDone;
}
