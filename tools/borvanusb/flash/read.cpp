#include <nlohmann/json.hpp>

#include "base/files.h"
#include "base/format.h"
#include "base/sha256.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "flash/dump_file.h"
#include "flash/engine/flash_end.h"
#include "flash/flash_options.h"
#include "flash/read.h"
#include "flash/regions.h"
#include "flash/report.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

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
  const DumpForm form = DumpFormFor(command.file, command.format);
  CheckWritable(command.file);
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto camera = context.host.OpenCamera(identity);
  const Range range = Wanted(command, *camera, context);
  CheckDumpAddresses(command.file, form, range.last);
  context.progress.Begin("read", range.Size());
  const std::vector<std::uint8_t> bytes = camera->ReadFlash(
      range.first, range.Size(), [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();
  WriteDump(command.file, form, range.first, bytes);
  const std::string digest = Sha256(bytes);
  context.output.Line(Format("Read {} from {} into {}, SHA-256 {}.", SizeText(bytes.size()),
                             Text(range), command.file, digest));
  context.result = {{"camera", CameraJson(identity)},
                    {"first", range.first},
                    {"last", range.last},
                    {"size", bytes.size()},
                    {"file", command.file},
                    {"form", NameOf(form)},
                    {"sha256", digest}};
  return ExitCode::kDone;
}

CommandRule FlashReadRule() {
  RuleOf<FlashReadCommand> rule({"flash", "read"}, "Reads flash into a file.");
  rule.Add(Optional(Argument("RANGE", "0x1000+4K, or 0x1000-0x1fff (both included), or all")),
           [](FlashReadCommand& command, const std::string& text) {
             command.whole = text == kWholeFlash;
             if (!command.whole) {
               command.range = RangeBesideAll(text);
               command.range_remark = RangeRemark(text);
             }
           });
  rule.Add(
      File(Argument("FILE", "raw bytes; a name with .hex, .srec or .txt is written so")),
      [](FlashReadCommand& command, const std::string& text) { command.file = FileValue(text); });
  AddRegion(rule, "read this region of the camera's profile, in place of RANGE");
  rule.Add(
      Choices(Option("--format", "FORMAT", "of FILE: raw, hex, srec, text; default by its name"),
              {"raw", "hex", "srec", "text"}),
      [](FlashReadCommand& command, const std::string& text) {
        ChoiceValue(text, {"raw", "hex", "srec", "text"});
        command.format = text;
      });
  AddFlashSize(rule);
  rule.Check([](const FlashReadCommand& command, const GivenOptions& given) {
    if (!given.Has("RANGE") && !given.Has("--region") &&
        (command.file == kWholeFlash || ParseRange(command.file))) {
      throw WrongUse("FILE: is missing; give the file that the bytes go into");
    }
    CheckRangeOrRegion(given);
  });
  rule.Example("borvanusb flash read 0+1M backup.bin");
  rule.Example("borvanusb flash read all backup.bin");
  return rule.Take();
}

}  // namespace borvanusb
