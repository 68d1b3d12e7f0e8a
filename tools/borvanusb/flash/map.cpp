#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/sector_plan.h"
#include "flash/flash_options.h"
#include "flash/map.h"
#include "flash/report.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kSectorsPerLine = 64;
constexpr std::uint8_t kErased = 0xFF;
constexpr int kAddressDigits = 8;
constexpr char kUsedSign = '#';
constexpr char kBlankSign = '.';

// What is mapped, in whole sectors.
Range Mapped(const FlashMapCommand& command, Camera& camera, Output& output) {
  if (!command.range_remark.empty()) {
    output.Note(command.range_remark);
  }
  if (command.range) {
    CheckWithinFlash(camera, "RANGE", *command.range, command.flash_size, output);
  }
  const Range range =
      command.range ? *command.range : WholeFlash(camera, command.flash_size, output);
  return SectorsAround(range.first, range.Size()).Whole();
}

}  // namespace

ExitCode Run(const FlashMapCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto camera = context.host.OpenCamera(identity);
  const Range range = Mapped(command, *camera, context.output);
  context.progress.Begin("read", range.Size());
  const std::vector<std::uint8_t> bytes = camera->ReadFlash(
      range.first, range.Size(), [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();

  const Ranges used =
      DifferingSectors(range.first, bytes, std::vector<std::uint8_t>(bytes.size(), kErased));
  const Ranges blank = Without({range}, used);
  std::string signs(range.Size() / kSectorSize, kBlankSign);
  for (const Range& run : used) {
    const auto start = static_cast<std::ptrdiff_t>((run.first - range.first) / kSectorSize);
    std::fill_n(signs.begin() + start, run.Size() / kSectorSize, kUsedSign);
  }
  for (std::uint64_t i = 0; i < signs.size(); i += kSectorsPerLine) {
    context.output.Line(Format("{}  {}", Hex(range.first + i * kSectorSize, kAddressDigits),
                               signs.substr(i, kSectorsPerLine)));
  }
  context.output.Line(
      Format("{} used: {}   {} blank: {}   each character is a sector of 4096 bytes", kUsedSign,
             SizeText(TotalSize(used)), kBlankSign, SizeText(TotalSize(blank))));
  context.result = {
      {"camera", CameraJson(identity)}, {"first", range.first},           {"last", range.last},
      {"sector_size", kSectorSize},     {"used", ToJson(used)},           {"blank", ToJson(blank)},
      {"used_bytes", TotalSize(used)},  {"blank_bytes", TotalSize(blank)}};
  return ExitCode::kDone;
}

CommandRule FlashMapRule() {
  RuleOf<FlashMapCommand> rule({"flash", "map"},
                               "Shows which sectors are used and which are blank.");
  rule.Add(Optional(Argument("RANGE", "0+512K, or 0-0x7ffff (both included), or all (default)")),
           [](FlashMapCommand& command, const std::string& text) {
             if (text != kWholeFlash) {
               command.range = RangeBesideAll(text);
               command.range_remark = RangeRemark(text);
             }
           });
  AddFlashSize(rule);
  rule.Example("borvanusb flash map --flash-size 1M");
  return rule.Take();
}

}  // namespace borvanusb
