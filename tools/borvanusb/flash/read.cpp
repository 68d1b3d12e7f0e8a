#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/hex_bytes.h"
#include "base/hex_dump.h"
#include "base/sha256.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/standard_streams.h"
#include "command/values.h"
#include "flash/dump_file.h"
#include "flash/engine/flash_end.h"
#include "flash/flash_options.h"
#include "flash/read.h"
#include "flash/regions.h"
#include "flash/report.h"
#include "flash/several.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

void CheckFile(const std::string& file, const Context& context) {
  if (IsStandardStream(file) && context.common.json) {
    throw Failure(ExitCode::kUsage, "FILE: --json needs standard output for its object",
                  "Give a file name, or omit FILE: the object then holds the bytes.");
  }
  if (IsStandardStream(file) && context.output.OutputIsTerminal()) {
    throw Failure(ExitCode::kUsage,
                  "FILE: standard output is a terminal, which is not for raw bytes",
                  "Redirect it, as in > flash.bin, or omit FILE to see a hex dump.");
  }
  if (!file.empty() && !IsStandardStream(file)) {
    CheckWritable(file);
  }
}

Range Wanted(const FlashReadCommand& command, Camera& camera, Context& context) {
  Output& output = context.output;
  const FlashLayout layout = LayoutFor(camera.Identity(), context);
  const ToldSize size = SizeFor(command.flash_size, layout);
  if (!command.region.empty()) {
    const Range range = RegionNamed(layout, command.region).range;
    CheckWithinFlash(camera, "--region", range, size, output);
    return range;
  }
  if (command.whole) {
    return WholeFlash(camera, size, output);
  }
  if (!command.range_remark.empty()) {
    output.Note(command.range_remark);
  }
  CheckWithinFlash(camera, "RANGE", command.range, size, output);
  return command.range;
}

}  // namespace

ExitCode Run(const FlashReadCommand& command, Context& context) {
  if (IsForSeveral(command.all_cameras, context)) {
    return ReadSeveral(command.file, command.all_cameras, context);
  }
  const DumpForm form = DumpFormFor(command.file, command.format);
  if (command.file.find('{') == std::string::npos) {
    CheckFile(command.file, context);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const std::string file_name = NameForCamera(command.file, identity);
  CheckFile(file_name, context);
  const auto camera = context.host.OpenCamera(identity);
  const Range range = Wanted(command, *camera, context);
  CheckDumpAddresses(command.file, form, range.last);
  context.progress.Begin("read", range.Size());
  const std::vector<std::uint8_t> bytes = camera->ReadFlash(
      range.first, range.Size(), [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();
  const std::string digest = Sha256(bytes);
  const std::string done = Format("Read {} from {} into {}, SHA-256 {}.", SizeText(bytes.size()),
                                  Text(range), ShownName(file_name, kStandardOutput), digest);
  if (file_name.empty()) {
    PrintLines(HexDump(range.first, bytes), context.output);
  } else if (IsStandardStream(file_name)) {
    context.output.Bytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    context.output.Note(done);
  } else {
    WriteDump(file_name, form, range.first, bytes);
    context.output.Line(done);
  }
  context.result = {{"camera", CameraJson(identity)},
                    {"first", range.first},
                    {"last", range.last},
                    {"size", bytes.size()},
                    {"file", file_name.empty() ? Json() : Json(file_name)},
                    {"form", file_name.empty() ? "dump" : NameOf(form)},
                    {"sha256", digest}};
  if (file_name.empty()) {
    context.result["bytes"] = HexBytes(bytes);
  }
  return ExitCode::kDone;
}

namespace {

// Stores the first argument. With --region it is the file.
void StoreRange(FlashReadCommand& command, const std::string& text) {
  command.whole = text == kWholeFlash;
  const bool range = command.whole || ParseRange(text);
  if (!command.region.empty()) {
    if (range) {
      throw WrongValue("contradicts --region: give one of the two");
    }
    command.file = FileOrStreamValue(text);
  } else if (!command.whole) {
    command.range = RangeBesideAll(text);
    command.range_remark = RangeRemark(text);
  }
}

}  // namespace

CommandRule FlashReadRule() {
  RuleOf<FlashReadCommand> rule({"flash", "read"}, "Reads flash into a file, or shows it.");
  // Must be added first, so that the parser knows whether RANGE comes before FILE.
  AddRegion(rule, "read this region of the camera's profile, in place of RANGE");
  rule.Add(Optional(Argument("RANGE", "0x1000+4K, or 0x1000-0x1fff (both included), or all")),
           StoreRange);
  rule.Add(File(Optional(Argument("FILE",
                                  "raw bytes, or the format of .hex, .srec or .txt; - writes raw "
                                  "bytes to standard output; without FILE, a hex dump is shown"))),
           [](FlashReadCommand& command, const std::string& text) {
             if (!command.region.empty()) {
               throw WrongValue("is one argument too many: --region takes no RANGE");
             }
             command.file = FileOrStreamValue(text);
           });
  rule.Add(
      Choices(Option("--format", "FORMAT", "of FILE: raw, hex, srec, text; default by its name"),
              {"raw", "hex", "srec", "text"}),
      [](FlashReadCommand& command, const std::string& text) {
        ChoiceValue(text, {"raw", "hex", "srec", "text"});
        command.format = text;
      });
  AddFlashSize(rule);
  rule.AddFlag("--all", kAllText, &FlashReadCommand::all_cameras);
  rule.Check([](const FlashReadCommand& command, const GivenOptions& given) {
    if (!given.Has("RANGE") && command.region.empty()) {
      throw WrongUse(
          "RANGE: is missing; give it, or a region of the camera's profile with --region");
    }
    CheckStandardOutput(command.file, given);
    CheckNameForSeveral(command.file, command.all_cameras, given);
  });
  rule.Example("borvanusb flash read 0+1M backup.bin");
  rule.Example("borvanusb flash read all backup.bin");
  return rule.Take();
}

}  // namespace borvanusb
