// The command `i2c diff`.

#include "i2c/diff.h"

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "i2c/i2c_list.h"
#include "i2c/i2c_options.h"
#include "names/diff_options.h"
#include "output/output.h"
#include "registers/list_problems.h"
#include "registers/written_registers.h"

namespace borvanusb {

Snapshot RegistersOfI2cList(const std::string& file, const I2cOptions& options, Context& context) {
  const std::optional<I2cTarget> given =
      options.slave ? std::optional(TargetOf(options)) : std::nullopt;
  const CheckedI2cList checked = CheckI2cList(ReadWholeText(file), given);
  if (!checked.opens_itself && !given) {
    throw Failure(ExitCode::kUsage,
                  Format("--slave: {} does not begin with 0xfff8 and 0xfffe, so it does not name "
                         "its device",
                         file),
                  "Give --slave and --mode, or put the two lines at the beginning of the list.");
  }
  RequireGoodList(file, checked.list, "nothing was compared", context);
  const std::optional<I2cTarget> opening = checked.opens_itself ? std::nullopt : given;
  const WrittenI2cRegisters written = WrittenByI2cList(checked.list.entries, opening);
  for (const auto& [at, line] : written.uncertain) {
    context.output.Note(
        Format("note: {}: register {} of slave {} is not compared: the width code in line {} may "
               "change it",
               file, Hex(at.address, WidthModeOf(at.mode).address_digits), Hex(at.slave, 2), line));
  }
  Snapshot values;
  for (const auto& [at, value] : written.values) {
    if (!written.uncertain.contains(at)) {
      Put(I2cAccess({at.slave, at.mode, options.option}, at.address), value,
          WidthModeOf(at.mode).highest_value, values);
    }
  }
  return values;
}

ExitCode Run(const I2cDiffCommand& command, Context& context) {
  return CompareSides(
      "i2c diff", DiffSideOf(command.left), DiffSideOf(command.right), command.csv,
      [&](const std::string& file, const RegisterNames*) {
        return RegistersOfI2cList(file, command.i2c, context);
      },
      context);
}

CommandRule I2cDiffRule() {
  RuleOf<I2cDiffCommand> rule({"i2c", "diff"}, "Shows where I2C lists, presets or cameras differ.");
  AddDiffSides(rule);
  AddSlave(rule, false);
  AddMode(rule);
  AddOption(rule);
  rule.Example("borvanusb i2c diff sensor.txt camera");
  return rule.Take();
}

}  // namespace borvanusb
