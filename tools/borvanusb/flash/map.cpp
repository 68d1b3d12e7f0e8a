#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/flash_memory.h"
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
#include "flash/regions.h"
#include "flash/report.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kSectorsPerLine = 64;
constexpr int kMapAddressDigits = 8;
constexpr char kUsedSign = '#';
constexpr char kBlankSign = '.';
constexpr char kNoRegionSign = '-';
constexpr char kSharedSign = '+';  // several regions

// The range to show, in whole sectors.
Range Mapped(const FlashMapCommand& command, const ToldSize& size, Camera& camera, Output& output) {
  if (!command.range_remark.empty()) {
    output.Note(command.range_remark);
  }
  if (command.range) {
    CheckWithinFlash(camera, "RANGE", *command.range, size, output);
  }
  const Range range = command.range ? *command.range : WholeFlash(camera, size, output);
  return SectorsAround(range.first, range.Size()).Whole();
}

// The regions of a flash, with one letter for each.
class RegionRow {
 public:
  // Uses the regions that overlap `mapped`.
  RegionRow(const FlashLayout& layout, const Range& mapped) {
    for (const FlashRegion& region : layout.regions) {
      if (!Within({region.range}, mapped).empty()) {
        regions_.push_back(region);
      }
    }
  }

  // One character for each sector: the letter of its region, kNoRegionSign, or kSharedSign if it
  // has several regions.
  std::string SignsFor(const Range& sectors) const {
    std::string signs(sectors.Size() / kSectorSize, kNoRegionSign);
    for (std::size_t i = 0; i < regions_.size(); ++i) {
      for (const Range& part : Within({regions_[i].range}, sectors)) {
        const std::uint64_t last = (part.last - sectors.first) / kSectorSize;
        for (std::uint64_t at = (part.first - sectors.first) / kSectorSize; at <= last; ++at) {
          signs[at] = signs[at] == kNoRegionSign ? LetterOf(i) : kSharedSign;
        }
      }
    }
    return signs;
  }

  bool IsEmpty() const { return regions_.empty(); }

  void ShowNames(Output& output) const {
    for (std::size_t i = 0; i < regions_.size(); ++i) {
      const FlashRegion& region = regions_[i];
      output.Line(Format("{}  {}: {}, {}{}{}", LetterOf(i), region.name, Text(region.range),
                         SizeText(region.range.Size()), region.read_only ? ", read-only" : "",
                         region.description.empty() ? "" : Format("; {}", region.description)));
    }
  }

  nlohmann::ordered_json ToJson() const {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const FlashRegion& region : regions_) {
      json.push_back({{"name", region.name},
                      {"first", region.range.first},
                      {"last", region.range.last},
                      {"size", region.range.Size()},
                      {"read_only", region.read_only},
                      {"description", region.description}});
    }
    return json;
  }

 private:
  static char LetterOf(std::size_t region) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return region < kLetters.size() ? kLetters[region] : '?';
  }

  std::vector<FlashRegion> regions_;
};

void ShowMap(const Range& range, const Ranges& used, const RegionRow& regions, Output& output) {
  std::string signs(range.Size() / kSectorSize, kBlankSign);
  for (const Range& run : used) {
    const auto start = static_cast<std::ptrdiff_t>((run.first - range.first) / kSectorSize);
    std::fill_n(signs.begin() + start, run.Size() / kSectorSize, kUsedSign);
  }
  const std::string letters = regions.SignsFor(range);
  for (std::uint64_t i = 0; i < signs.size(); i += kSectorsPerLine) {
    const std::string address = Hex(range.first + i * kSectorSize, kMapAddressDigits);
    output.Line(Format("{}  {}", address, signs.substr(i, kSectorsPerLine)));
    if (!regions.IsEmpty()) {
      output.Line(Format("{:{}}  {}", "", address.size(), letters.substr(i, kSectorsPerLine)));
    }
  }
  const std::uint64_t blank = range.Size() - TotalSize(used);
  output.Line(Format("{} used: {}   {} blank: {}   each character is a sector of 4096 bytes",
                     kUsedSign, SizeText(TotalSize(used)), kBlankSign, SizeText(blank)));
  regions.ShowNames(output);
}

}  // namespace

ExitCode Run(const FlashMapCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const FlashLayout layout = LayoutFor(identity, context);
  const auto camera = context.host.OpenCamera(identity);
  const Range range = Mapped(command, SizeFor(command.flash_size, layout), *camera, context.output);
  context.progress.Begin("read", range.Size());
  const std::vector<std::uint8_t> bytes = camera->ReadFlash(
      range.first, range.Size(), [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();

  const Ranges used =
      DifferingSectors(range.first, bytes, std::vector<std::uint8_t>(bytes.size(), kErased));
  const Ranges blank = Without({range}, used);
  const RegionRow regions(layout, range);
  ShowMap(range, used, regions, context.output);
  context.result = {{"camera", CameraJson(identity)},
                    {"first", range.first},
                    {"last", range.last},
                    {"sector_size", kSectorSize},
                    {"used", ToJson(used)},
                    {"blank", ToJson(blank)},
                    {"used_bytes", TotalSize(used)},
                    {"blank_bytes", TotalSize(blank)},
                    {"regions", regions.ToJson()}};
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
