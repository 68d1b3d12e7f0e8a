#include "flash/program_text.h"

#include "base/format.h"
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
  output.Line(Format("camera     {}", outcome.camera ? CameraLine(*outcome.camera) : ""));
  output.Line(Format("image      {}, {}", image.file, SizeText(image.bytes.size())));
  output.Line(Format("SHA-256    {}", image.sha256));
  output.Line(Format("goes to    {}", PlaceOf(image)));
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
                       SizeText(image.bytes.size())));
    return;
  }
  output.Line(Format("Programmed {} at {}: {} of {} sectors changed, {}, {}.",
                     SizeText(image.bytes.size()), PlaceOf(image),
                     TotalSize(outcome.changes) / kSectorSize, outcome.sectors,
                     outcome.verified.value_or(false) ? "all read back equal" : "not read back",
                     SecondsText(outcome.total_seconds)));
}

}  // namespace borvanusb
