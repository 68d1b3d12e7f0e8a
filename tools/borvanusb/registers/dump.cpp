#include <nlohmann/json.hpp>

#include "base/chip_register.h"
#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/hex_dump.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "names/named_dump.h"
#include "output/output.h"
#include "registers/dump.h"
#include "registers/register_list.h"
#include "registers/register_options.h"
#include "registers/register_read.h"

namespace borvanusb {

namespace {

// A list contains its page only once, and loading uses the low 16 bits of each address.
void CheckOnePage(const Range& range) {
  if (range.first >> kPageShift != range.last >> kPageShift) {
    throw Failure(
        ExitCode::kUsage,
        Format("RANGE: {} covers several pages (bits 16 to 31); a list can contain only one",
               Text(range)),
        "Dump each page to a list of its own, or all as raw bytes to a name that ends in "
        ".bin.");
  }
}

std::vector<std::uint8_t> RawBytes(std::span<const std::uint32_t> values, bool wide) {
  std::vector<std::uint8_t> bytes;
  for (const std::uint32_t value : values) {
    for (unsigned shift = 0; shift < (wide ? 32U : 8U); shift += 8) {
      bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
  }
  return bytes;
}

}  // namespace

ExitCode Run(const RegDumpCommand& command, Context& context) {
  if (command.all_named) {
    return DumpNamed(IsStandardStream(command.file) ? "" : command.file, context);
  }
  const bool raw = IsRawFileName(command.file);
  const bool to_file = !command.file.empty() && !IsStandardStream(command.file);
  if (!raw && !command.wide && !command.hex) {
    CheckOnePage(command.range);
  }
  if (to_file) {
    CheckWritable(command.file);
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  const RegisterRead read = ReadRegisters(context, *camera.camera, command.range, command.wide);
  if (raw) {
    WriteWholeFile(command.file, RawBytes(read.values, command.wide));
  } else if (command.hex) {
    PrintLines(HexDump(command.range.first, RawBytes(read.values, false)), context.output);
  } else {
    WriteDump(context, command.file,
              command.wide ? WideRegisterDumpText(command.range, read.values)
                           : RegisterDumpText(command.range, read.values));
  }
  if (to_file) {
    context.output.Line(Format("{} {} in {}", Count(read.values.size(), "register"),
                               Text(command.range), command.file));
  }
  if (!raw && !command.wide && !command.hex && command.range.first >> kPageShift != 0) {
    context.output.Note(
        "note: loading this list sends bits 16 to 31 of the addresses to the device as delay "
        "values; ask the chip's maker how the device uses them");
  }
  context.result = {
      {"first", command.range.first},
      {"last", command.range.last},
      {"wide", command.wide},
      {"checked", read.checked},
      {"file", to_file ? nlohmann::ordered_json(command.file) : nlohmann::ordered_json()},
      {"form", raw           ? "raw"
               : command.hex ? "hex"
                             : "list"}};
  if (!to_file) {
    context.result["registers"] = ValuesJson(command.range, read.values);
  }
  return ExitCode::kDone;
}

CommandRule RegDumpRule() {
  RuleOf<RegDumpCommand> rule({"reg", "dump"}, "Writes registers as a list for reg load.");
  // Must be added first, so that the following options can refer to it.
  rule.AddFlag("--all-named", "all registers named in the profile; omit RANGE",
               &RegDumpCommand::all_named);
  rule.Add(Optional(Argument("RANGE", kRangeText)),
           [](RegDumpCommand& command, const std::string& text) {
             if (command.all_named) {
               command.file = FileOrStreamValue(text);
             } else {
               command.range = RangeValue(text);
             }
           });
  rule.Add(File(Optional(Argument("FILE", kDumpFileText))),
           [](RegDumpCommand& command, const std::string& text) {
             if (command.all_named) {
               throw WrongValue("is one argument too many: --all-named takes no RANGE");
             }
             command.file = FileOrStreamValue(text);
           });
  rule.AddFlag("--wide", "registers of 32 bits instead of 8", &RegDumpCommand::wide);
  rule.AddFlag("--hex", kHexText, &RegDumpCommand::hex);
  rule.Check([](const RegDumpCommand& command, const GivenOptions& given) {
    if (!command.all_named && !given.Has("RANGE")) {
      throw WrongUse("reg dump: RANGE is missing: which registers, or --all-named");
    }
    if (command.all_named && (command.wide || command.hex)) {
      throw WrongUse(Format("{}: is for a RANGE; the profile tells the width of named registers",
                            command.wide ? "--wide" : "--hex"));
    }
    if (command.hex && command.wide) {
      throw WrongUse("--hex: shows registers of 8 bits, --wide means those of 32");
    }
    CheckDumpFile(command, given);
  });
  rule.Details(
      "With --all-named the lines are NAME=VALUE; a name that ends in .csv gives a table with the "
      "fields. Registers that change when they are read are omitted.");
  rule.Example("borvanusb reg dump 0x1000-0x10ff registers.txt");
  rule.Example("borvanusb reg dump --all-named yesterday.txt");
  return rule.Take();
}

}  // namespace borvanusb
