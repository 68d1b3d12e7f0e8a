// i2c read, i2c write

#include <nlohmann/json.hpp>

#include "command/camera_work.h"
#include "command/commands.h"
#include "i2c/width_modes.h"
#include "output/output.h"
#include "registers/masked_write.h"

namespace borvanusb {

ExitCode Run(const I2cReadCommand& command, Context& context) {
  const I2cTarget target = TargetOf(command.i2c);
  CheckRegisterCount(command.range);
  const auto camera = OpenChosenCamera(context);
  const std::vector<std::uint32_t> values =
      ReadEach(context, command.range,
               [&](std::uint32_t address) { return camera->ReadI2c(target, address); });
  const WidthMode& mode = WidthModeOf(target.mode);
  for (std::size_t i = 0; i < values.size(); ++i) {
    context.output.Line(Hex(command.range.first + i, mode.address_digits) + "  " +
                        Hex(values[i], mode.value_digits));
  }
  context.result = TargetJson(target);
  context.result["registers"] = ValuesJson(command.range, values);
  return ExitCode::kDone;
}

ExitCode Run(const I2cWriteCommand& command, Context& context) {
  const I2cTarget target = TargetOf(command.i2c);
  const WidthMode& mode = WidthModeOf(target.mode);
  const RegisterWrite write{
      command.address,
      command.value,
      command.mask,
      command.verify,
      "slave " + Hex(target.slave, 2) + ", register " + Hex(command.address, mode.address_digits),
      mode.address_digits,
      mode.value_digits};
  CheckMask(write);
  const ReservedCamera camera = ReserveChosenCamera(context);
  context.result = TargetJson(target);
  WriteMasked(
      write, [&] { return camera->ReadI2c(target, command.address); },
      [&](std::uint32_t value) { camera->WriteI2c(target, command.address, value); }, context);
  return ExitCode::kDone;
}

}  // namespace borvanusb
