#include "flash/program_text.h"

#include "base/numbers.h"
#include "camera/camera_choice.h"
#include "flash/engine/byte_ranges.h"

namespace borvanusb {

namespace {

std::string PlaceOf(const Image& image) {
  return Text(Range{image.address, static_cast<std::uint32_t>(image.End() - 1)});
}

}  // namespace

void ShowPlan(const Image& image, const ProgramOutcome& outcome, Output& output) {
  const std::uint64_t changed = TotalSize(outcome.changes);
  output.Line("camera     " + (outcome.camera ? CameraLine(*outcome.camera) : ""));
  output.Line("image      " + image.file + ", " + SizeText(image.bytes.size()));
  output.Line("SHA-256    " + image.sha256);
  output.Line("goes to    " + PlaceOf(image));
  output.Line("sectors    " + std::to_string(outcome.sectors) + ", of which " +
              std::to_string(changed / kSectorSize) + " change" +
              (changed == 0 ? "" : ": " + RangesText(outcome.changes)));
  output.Line("to write   " + SizeText(changed));
  output.Line("transfers  " + std::to_string(outcome.transfers) + ", about " +
              SecondsText(outcome.expected_seconds) +
              " and the time that the flash takes to erase");
  output.Line("Nothing was changed.");
}

void ShowResult(const Image& image, const ProgramOutcome& outcome, Output& output) {
  if (outcome.changes.empty()) {
    output.Line("The flash holds the image already: " + PlaceOf(image) + ", " +
                SizeText(image.bytes.size()) + ", compared.");
    return;
  }
  output.Line("Programmed " + SizeText(image.bytes.size()) + " at " + PlaceOf(image) + ": " +
              std::to_string(TotalSize(outcome.changes) / kSectorSize) + " of " +
              std::to_string(outcome.sectors) + " sectors changed, " +
              (outcome.verified.value_or(false) ? "all read back equal" : "not read back") + ", " +
              SecondsText(outcome.total_seconds) + ".");
}

}  // namespace borvanusb
