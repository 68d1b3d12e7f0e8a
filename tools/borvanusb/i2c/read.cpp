// The command `i2c read`.

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "i2c/i2c_options.h"
#include "i2c/i2c_run.h"
#include "i2c/read.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/register_options.h"

namespace borvanusb {

ExitCode Run(const I2cReadCommand& command, Context& context) {
  const I2cTarget target = TargetOf(command.i2c);
  CheckRegisterCount(command.range);
  const auto camera = OpenChosenCamera(context);
  const std::vector<std::uint32_t> values = ReadI2cRow(context, *camera, target, command.range);
  const WidthMode& mode = WidthModeOf(target.mode);
  for (std::size_t i = 0; i < values.size(); ++i) {
    context.output.Line(Format("{}  {}", Hex(command.range.first + i, mode.address_digits),
                               Hex(values[i], mode.value_digits)));
  }
  context.result = TargetJson(target);
  context.result["registers"] = ValuesJson(command.range, values);
  return ExitCode::kDone;
}

CommandRule I2cReadRule() {
  RuleOf<I2cReadCommand> rule({"i2c", "read"}, "Reads registers of a device on the I2C bus.");
  AddRange(rule, "ADDR[-END]");
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cReadCommand& command, const GivenOptions&) {
    CheckI2cAddress("ADDR[-END]", command.range.last, command.i2c);
  });
  rule.Example("borvanusb i2c read 0x300a-0x300b --slave 0x6c");
  return rule.Take();
}

}  // namespace borvanusb
