// The command `i2c write`.

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/width_modes.h"
#include "camera/i2c_failure.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "i2c/write.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/register_options.h"

namespace borvanusb {

ExitCode Run(const I2cWriteCommand& command, Context& context) {
  const I2cTarget target = TargetOf(command.i2c);
  const WidthMode& mode = WidthModeOf(target.mode);
  const RegisterWrite write{command.address,
                            command.value,
                            command.mask,
                            command.verify,
                            Format("slave {}, register {}", Hex(target.slave, 2),
                                   Hex(command.address, mode.address_digits)),
                            mode.address_digits,
                            mode.value_digits};
  CheckMask(write);
  const ReservedCamera camera = ReserveChosenCamera(context);
  context.result = TargetJson(target);
  WriteMasked(
      write,
      [&] {
        return ExplainingI2c(*camera.camera, target,
                             [&] { return camera->ReadI2c(target, command.address); });
      },
      [&](std::uint32_t value) {
        ExplainingI2c(*camera.camera, target,
                      [&] { camera->WriteI2c(target, command.address, value); });
      },
      context);
  return ExitCode::kDone;
}

CommandRule I2cWriteRule() {
  RuleOf<I2cWriteCommand> rule({"i2c", "write"}, "Writes a register of a device on the I2C bus.");
  AddAddressAndValue(rule);
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  AddMaskAndVerify(rule);
  rule.Check([](const I2cWriteCommand& command, const GivenOptions&) {
    const WidthMode& mode = WidthModeOf(command.i2c.mode);
    const std::string where = Format("the data of width mode {}", mode.name);
    CheckI2cAddress("ADDR", command.address, command.i2c);
    CheckFits("VALUE", command.value, mode.data_bits, where);
    CheckFits("--mask", command.mask.value_or(0), mode.data_bits, where);
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb i2c write 0x3500 0x12 --slave 0x6c --mode 16/8 --verify");
  return rule.Take();
}

}  // namespace borvanusb
