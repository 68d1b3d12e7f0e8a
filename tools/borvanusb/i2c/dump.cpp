#include <nlohmann/json.hpp>

#include "base/files.h"
#include "base/format.h"
#include "base/hex_dump.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "i2c/dump.h"
#include "i2c/i2c_list.h"
#include "i2c/i2c_options.h"
#include "i2c/i2c_run.h"
#include "output/output.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

// In bus order: high byte first.
std::vector<std::uint8_t> RawBytes(std::span<const std::uint32_t> values, const WidthMode& mode) {
  std::vector<std::uint8_t> bytes;
  for (const std::uint32_t value : values) {
    for (int digits = mode.value_digits; digits > 0; digits -= 2) {
      bytes.push_back(static_cast<std::uint8_t>(value >> static_cast<unsigned>(4 * (digits - 2))));
    }
  }
  return bytes;
}

}  // namespace

ExitCode Run(const I2cDumpCommand& command, Context& context) {
  const I2cTarget target = TargetOf(command.i2c);
  CheckRegisterCount(command.range);
  const bool to_file = !command.file.empty() && !IsStandardStream(command.file);
  if (to_file) {
    CheckWritable(command.file);
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  const std::vector<std::uint32_t> values =
      ReadI2cRow(context, *camera.camera, target, command.range);
  const bool raw = IsRawFileName(command.file);
  if (raw) {
    WriteWholeFile(command.file, RawBytes(values, WidthModeOf(target.mode)));
  } else if (command.hex) {
    PrintLines(HexDump(command.range.first, RawBytes(values, WidthModeOf(target.mode))),
               context.output);
  } else {
    WriteDump(context, command.file, I2cDumpText(target, command.range, values));
  }
  context.result = TargetJson(target);
  context.result["first"] = command.range.first;
  context.result["last"] = command.range.last;
  context.result["form"] = raw ? "raw" : command.hex ? "hex" : "list";
  if (!to_file) {
    context.result["file"] = nullptr;
    context.result["registers"] = ValuesJson(command.range, values);
  } else {
    context.result["file"] = command.file;
    context.output.Line(Format("{} {} of slave {} in {}", Count(values.size(), "register"),
                               Text(command.range), Hex(target.slave, 2), command.file));
  }
  return ExitCode::kDone;
}

CommandRule I2cDumpRule() {
  RuleOf<I2cDumpCommand> rule({"i2c", "dump"}, "Writes I2C registers as a list for i2c load.");
  AddRange(rule, "RANGE");
  AddDumpFile(rule);
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cDumpCommand& command, const GivenOptions& given) {
    CheckI2cAddress("RANGE", command.range.last, command.i2c);
    CheckDumpFile(command, given);
    if (command.hex && WidthModeOf(command.i2c.mode).data_bits != kByteBits) {
      throw WrongUse(Format("--hex: shows values of 8 bits; width mode {} has others",
                            WidthModeOf(command.i2c.mode).name));
    }
  });
  rule.Example("borvanusb i2c dump 0x3000-0x30ff sensor.txt --slave 0x6c");
  return rule.Take();
}

}  // namespace borvanusb
