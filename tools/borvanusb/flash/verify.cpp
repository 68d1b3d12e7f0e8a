#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/values.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/image.h"
#include "flash/flash_options.h"
#include "flash/place_images.h"
#include "flash/regions.h"
#include "flash/report.h"
#include "flash/several.h"
#include "flash/verify.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// The content of the flash compared with the image.
struct Comparison {
  const Image& image;
  std::vector<std::vector<std::uint8_t>> found;  // by segment

  // Calls `take` with address, expected byte and found byte, for each byte that differs.
  template <typename Take>
  void ForEachDifference(const Take& take) const {
    for (std::size_t i = 0; i < found.size(); ++i) {
      const Segment& segment = image.segments[i];
      for (std::size_t offset = 0; offset < found[i].size(); ++offset) {
        if (segment.bytes[offset] != found[i][offset]) {
          take(segment.address + offset, segment.bytes[offset], found[i][offset]);
        }
      }
    }
  }

  Ranges Wrong() const {
    Ranges wrong;
    for (std::size_t i = 0; i < found.size(); ++i) {
      const Segment& segment = image.segments[i];
      const Ranges here = DifferingBytes(segment.address, segment.bytes, found[i]);
      wrong.insert(wrong.end(), here.begin(), here.end());
    }
    return wrong;
  }
};

// Writes differences one by one, because there may be millions.
void WriteCsv(std::ostream& file, const Comparison& comparison) {
  file << "address,expected,found\r\n";
  comparison.ForEachDifference(
      [&](std::uint64_t address, std::uint8_t expected, std::uint8_t found) {
        file << Hex(address, 8) << ',' << Hex(expected, 2) << ',' << Hex(found, 2) << "\r\n";
      });
}

void WriteJson(std::ostream& file, const Comparison& comparison) {
  const char* before = "";
  file << R"({"differences":[)";
  comparison.ForEachDifference(
      [&](std::uint64_t address, std::uint8_t expected, std::uint8_t found) {
        file << before << R"({"address":)" << address << R"(,"expected":)" << unsigned{expected}
             << R"(,"found":)" << unsigned{found} << '}';
        before = ",";
      });
  file << "]}\n";
}

std::vector<ImageFile> LoadAll(const FlashVerifyCommand& command, bool for_several,
                               Output& output) {
  const std::vector<ImageWish> wishes = WishesOf(command);
  std::vector<ImageFile> files = LoadImageFiles(wishes, command.form, command.force, output);
  for (const ImageWish& wish : wishes) {
    if (!command.diff.empty() && SameFile(command.diff, wish.file)) {
      throw Failure(ExitCode::kUsage, Format("--diff: {} is the image itself", command.diff),
                    "Give the differences a file of their own.");
    }
  }
  if (!command.diff.empty() && !for_several) {
    CheckWritable(command.diff);
  }
  return files;
}

Comparison Compare(const Image& image, Camera& camera, Progress& progress) {
  Comparison comparison{image, {}};
  progress.Begin("verify", image.Size());
  std::uint64_t done = 0;
  for (const Segment& segment : image.segments) {
    comparison.found.push_back(
        camera.ReadFlash(segment.address, segment.bytes.size(),
                         [&](std::uint64_t part) { progress.Advance(done + part); }));
    done += segment.bytes.size();
  }
  progress.Done();
  return comparison;
}

void TellDifferences(const Comparison& comparison, const Ranges& wrong, Output& output) {
  output.Error(Format("borvanusb: flash verify: {}{}, the first at {}", SizeText(TotalSize(wrong)),
                      TotalSize(wrong) == 1 ? " differs" : " differ", Hex(wrong.front().first)));
  output.Line(Format("Different: {} of {} bytes, in {}{}", TotalSize(wrong),
                     comparison.image.Size(), wrong.size(),
                     wrong.size() == 1 ? " range" : " ranges"));
  bool is_first = true;
  comparison.ForEachDifference(
      [&](std::uint64_t address, std::uint8_t expected, std::uint8_t found) {
        if (is_first) {
          output.Line(Format("first      {}: the flash holds {}, the image {}", Hex(address, 8),
                             Hex(found, 2), Hex(expected, 2)));
        }
        is_first = false;
      });
  output.Line(Format("ranges     {}", RangesText(wrong)));
}

}  // namespace

ExitCode Run(const FlashVerifyCommand& command, Context& context) {
  std::vector<ImageFile> files =
      LoadAll(command, IsForSeveral(command.all, context), context.output);
  if (IsForSeveral(command.all, context)) {
    return VerifySeveral(command.all, context);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const FlashLayout layout = LayoutFor(identity, context);
  const Placement placement = PlaceImages(std::move(files), layout, command.force, context.output);
  const Image& image = placement.image;
  const auto camera = context.host.OpenCamera(identity);
  CheckWithinFlash(*camera, image, SizeFor(command.flash_size, layout), context.output);
  const Comparison comparison = Compare(image, *camera, context.progress);
  const Ranges wrong = comparison.Wrong();
  if (!command.diff.empty()) {
    const auto write = command.diff.ends_with(".csv") ? WriteCsv : WriteJson;
    WriteFileInParts(command.diff, [&](std::ostream& file) { write(file, comparison); });
  }
  context.result = {
      {"camera", CameraJson(identity)},
      {"image", {{"file", image.file}, {"size", image.Size()}, {"sha256", image.sha256}}},
      {"address", image.First()},
      {"images", ToJson(placement.files)},
      {"equal", wrong.empty()},
      {"different_bytes", TotalSize(wrong)},
      {"first_difference", wrong.empty() ? Json() : Json(wrong.front().first)},
      {"different", ToJson(wrong)}};
  if (!wrong.empty()) {
    TellDifferences(comparison, wrong, context.output);
    return ExitCode::kVerify;
  }
  context.output.Line(Format("Equal: the flash holds the image at {}, {}.",
                             RangesText(image.Places()), SizeText(image.Size())));
  return ExitCode::kDone;
}

CommandRule FlashVerifyRule() {
  RuleOf<FlashVerifyCommand> rule({"flash", "verify"}, "Compares the flash with an image.");
  AddImage(rule);
  AddImageAddress(rule);
  AddFlashSize(rule);
  rule.Add(
      File(Option("--diff", "FILE", "write the differences: CSV for .csv, else JSON")),
      [](FlashVerifyCommand& command, const std::string& text) { command.diff = FileValue(text); });
  rule.AddFlag("--force", "compare a file that does not look like firmware",
               &FlashVerifyCommand::force);
  AddAll(rule);
  rule.Check([](const FlashVerifyCommand& command, const GivenOptions& given) {
    CheckAll(command.all, given);
    CheckPlaces(WishesOf(command), command.form, given);
  });
  rule.Example("borvanusb flash verify firmware.bin --address 0x40000");
  return rule.Take();
}

}  // namespace borvanusb
