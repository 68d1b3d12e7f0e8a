#include "flash/program_text.h"

#include "base/format.h"
#include "base/numbers.h"
#include "camera/camera_choice.h"
#include "flash/engine/byte_ranges.h"

namespace borvanusb {

namespace {

std::string PlaceOf(const Image& image) {
  return RangesText(image.Places());
}

}  // namespace

void ShowPlan(const ProgramOutcome& outcome, Output& output) {
  const std::uint64_t changed = TotalSize(outcome.changes);
  output.Line(Format("camera     {}", outcome.camera ? CameraLine(*outcome.camera) : ""));
  for (const PlacedImage& file : outcome.images) {
    output.Line(Format("image      {}, {}", file.file, SizeText(file.size)));
    output.Line(Format("SHA-256    {}", file.sha256));
    output.Line(Format("goes to    {}", RangesText(file.places)));
  }
  output.Line(Format("sectors    {}, of which {} change{}", outcome.sectors, changed / kSectorSize,
                     changed == 0 ? "" : Format(": {}", RangesText(outcome.changes))));
  output.Line(Format("to write   {}", SizeText(changed)));
  output.Line(Format("transfers  {}, about {} and the time that the flash takes to erase",
                     outcome.transfers, SecondsText(outcome.expected_seconds)));
  output.Line("Nothing was changed.");
}

void ShowResult(const Image& image, const ProgramOutcome& outcome, Output& output) {
  if (outcome.changes.empty()) {
    output.Line(Format("The flash holds the image already: {}, {}, compared.", PlaceOf(image),
                       SizeText(image.Size())));
    return;
  }
  output.Line(Format("Programmed {} at {}: {} of {} sectors changed, {}, {}.",
                     SizeText(image.Size()), PlaceOf(image),
                     TotalSize(outcome.changes) / kSectorSize, outcome.sectors,
                     outcome.verified.value_or(false) ? "all read back equal" : "not read back",
                     SecondsText(outcome.total_seconds)));
}

}  // namespace borvanusb
