#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/commands.h"
#include "failure.h"
#include "files.h"
#include "flash/byte_ranges.h"
#include "flash/image.h"
#include "flash/report.h"
#include "host.h"
#include "output/output.h"
#include "output/progress.h"

namespace {

using Json = nlohmann::ordered_json;

std::string CsvOf(const Ranges& wrong, const Image& image, const std::vector<std::uint8_t>& found) {
  std::string text = "address,expected,found\r\n";
  for (const Range& range : wrong) {
    for (std::uint64_t address = range.first; address <= range.last; ++address) {
      const std::uint64_t offset = address - image.address;
      text += Hex(address, 8) + "," + Hex(image.bytes[offset], 2) + "," + Hex(found[offset], 2) +
              "\r\n";
    }
  }
  return text;
}

std::string JsonOf(const Ranges& wrong, const Image& image,
                   const std::vector<std::uint8_t>& found) {
  Json differences = Json::array();
  for (const Range& range : wrong) {
    for (std::uint64_t address = range.first; address <= range.last; ++address) {
      const std::uint64_t offset = address - image.address;
      differences.push_back(
          {{"address", address}, {"expected", image.bytes[offset]}, {"found", found[offset]}});
    }
  }
  return Json{{"differences", differences}}.dump() + "\n";
}

}  // namespace

ExitCode Run(const FlashVerifyCommand& command, Context& context) {
  const Image image = LoadImage(command.image, command.address);
  if (!command.diff.empty()) {
    if (command.diff == command.image) {
      throw Failure(ExitCode::kUsage, "--diff: " + command.diff + " is the image itself",
                    "Give the differences a file of their own.");
    }
    CheckWritable(command.diff);
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto camera = context.host.OpenCamera(identity);
  context.progress.Begin("verify", image.bytes.size());
  const std::vector<std::uint8_t> found =
      camera->ReadFlash(image.address, image.bytes.size(),
                        [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();

  const Ranges wrong = DifferingBytes(image.address, image.bytes, found);
  if (!command.diff.empty()) {
    WriteWholeText(command.diff, command.diff.ends_with(".csv") ? CsvOf(wrong, image, found)
                                                                : JsonOf(wrong, image, found));
  }
  const Range place{image.address, static_cast<std::uint32_t>(image.End() - 1)};
  context.result = {
      {"camera", ToJson(identity)},
      {"image", {{"file", image.file}, {"size", image.bytes.size()}, {"sha256", image.sha256}}},
      {"address", image.address},
      {"equal", wrong.empty()},
      {"different_bytes", TotalSize(wrong)},
      {"first_difference", wrong.empty() ? Json() : Json(wrong.front().first)},
      {"different", ToJson(wrong)}};
  if (wrong.empty()) {
    context.output.Line("Equal: the flash holds the image at " + Text(place) + ", " +
                        SizeText(image.bytes.size()) + ".");
    return ExitCode::kDone;
  }
  const std::uint32_t first = wrong.front().first;
  const std::uint32_t offset = first - image.address;
  context.output.Line("Different: " + std::to_string(TotalSize(wrong)) + " of " +
                      std::to_string(image.bytes.size()) + " bytes, in " +
                      std::to_string(wrong.size()) + (wrong.size() == 1 ? " range" : " ranges"));
  context.output.Line("first      " + Hex(first, 8) + ": the flash holds " + Hex(found[offset], 2) +
                      ", the image " + Hex(image.bytes[offset], 2));
  context.output.Line("ranges     " + RangesText(wrong));
  return ExitCode::kVerify;
}
