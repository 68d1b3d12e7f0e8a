#include <nlohmann/json.hpp>
#include <ostream>
#include <span>

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
#include "flash/engine/image_format.h"
#include "flash/flash_options.h"
#include "flash/report.h"
#include "flash/several.h"
#include "flash/verify.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Differences go to their file one by one: there may be millions.
void WriteCsv(std::ostream& file, const Image& image, std::span<const std::uint8_t> found) {
  file << "address,expected,found\r\n";
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (image.bytes[i] != found[i]) {
      file << Hex(image.address + i, 8) << ',' << Hex(image.bytes[i], 2) << ',' << Hex(found[i], 2)
           << "\r\n";
    }
  }
}

void WriteJson(std::ostream& file, const Image& image, std::span<const std::uint8_t> found) {
  const char* before = "";
  file << R"({"differences":[)";
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (image.bytes[i] != found[i]) {
      file << before << R"({"address":)" << image.address + i << R"(,"expected":)"
           << unsigned{image.bytes[i]} << R"(,"found":)" << unsigned{found[i]} << '}';
      before = ",";
    }
  }
  file << "]}\n";
}

}  // namespace

ExitCode Run(const FlashVerifyCommand& command, Context& context) {
  const Image image = LoadImage(command.image, command.address);
  if (!command.force) {
    RefuseOtherFormat(image);
  }
  if (!command.diff.empty()) {
    if (SameFile(command.diff, command.image)) {
      throw Failure(ExitCode::kUsage, Format("--diff: {} is the image itself", command.diff),
                    "Give the differences a file of their own.");
    }
    if (!IsForSeveral(command.all, context)) {
      CheckWritable(command.diff);
    }
  }
  if (IsForSeveral(command.all, context)) {
    return VerifySeveral(command.all, context);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto camera = context.host.OpenCamera(identity);
  CheckWithinFlash(*camera, image, command.flash_size, context.output);
  context.progress.Begin("verify", image.bytes.size());
  const std::vector<std::uint8_t> found =
      camera->ReadFlash(image.address, image.bytes.size(),
                        [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();

  const Ranges wrong = DifferingBytes(image.address, image.bytes, found);
  if (!command.diff.empty()) {
    const auto write = command.diff.ends_with(".csv") ? WriteCsv : WriteJson;
    WriteFileInParts(command.diff, [&](std::ostream& file) { write(file, image, found); });
  }
  const Range place{image.address, static_cast<std::uint32_t>(image.End() - 1)};
  context.result = {
      {"camera", CameraJson(identity)},
      {"image", {{"file", image.file}, {"size", image.bytes.size()}, {"sha256", image.sha256}}},
      {"address", image.address},
      {"equal", wrong.empty()},
      {"different_bytes", TotalSize(wrong)},
      {"first_difference", wrong.empty() ? Json() : Json(wrong.front().first)},
      {"different", ToJson(wrong)}};
  if (wrong.empty()) {
    context.output.Line(Format("Equal: the flash holds the image at {}, {}.", Text(place),
                               SizeText(image.bytes.size())));
    return ExitCode::kDone;
  }
  const std::uint32_t first = wrong.front().first;
  const std::uint32_t offset = first - image.address;
  context.output.Error(Format("borvanusb: flash verify: {}{}, the first at {}",
                              SizeText(TotalSize(wrong)),
                              TotalSize(wrong) == 1 ? " differs" : " differ", Hex(first)));
  context.output.Line(Format("Different: {} of {} bytes, in {}{}", TotalSize(wrong),
                             image.bytes.size(), wrong.size(),
                             wrong.size() == 1 ? " range" : " ranges"));
  context.output.Line(Format("first      {}: the flash holds {}, the image {}", Hex(first, 8),
                             Hex(found[offset], 2), Hex(image.bytes[offset], 2)));
  context.output.Line(Format("ranges     {}", RangesText(wrong)));
  return ExitCode::kVerify;
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
    AskForAddress(command.image, given);
  });
  rule.Example("borvanusb flash verify firmware.bin --address 0x40000");
  return rule.Take();
}

}  // namespace borvanusb
