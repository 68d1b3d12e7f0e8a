#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/commands.h"
#include "failure.h"
#include "flash/byte_ranges.h"
#include "flash/report.h"
#include "flash/sector_plan.h"
#include "flash/sector_writer.h"
#include "flash/work_state.h"
#include "host.h"
#include "output/output.h"
#include "output/progress.h"

namespace {

constexpr std::uint8_t kErased = 0xFF;

void RefuseHalfSectors(const Range& range) {
  const Range whole = SectorsAround(range.first, range.Size()).Whole();
  if (!(whole == range)) {
    throw Failure(ExitCode::kUsage,
                  "RANGE: " + Text(range) +
                      " ends within a sector; only whole sectors of 4096 bytes can be erased",
                  "The sectors around it are " + Text(whole) + ".");
  }
}

// Erases with the number of bytes done kept for a failure's text.
void EraseSectors(Camera& camera, const Range& range, std::uint64_t& done, Context& context) {
  context.progress.Begin("erase", range.Size());
  for (; done < range.Size(); done += kSectorSize) {
    if (context.host.StopRequested()) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
    camera.EraseSector(static_cast<std::uint32_t>(range.first + done));
    context.progress.Advance(done + kSectorSize);
  }
  context.progress.Done();
}

Ranges FindUnerased(Camera& camera, const Range& range, Context& context) {
  context.progress.Begin("verify", range.Size());
  const std::vector<std::uint8_t> bytes = camera.ReadFlash(
      range.first, range.Size(), [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();
  return DifferingBytes(range.first, bytes, std::vector<std::uint8_t>(bytes.size(), kErased));
}

}  // namespace

ExitCode Run(const FlashEraseCommand& command, Context& context) {
  const Range& range = command.range;
  RefuseHalfSectors(range);
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto reservation = context.host.ReserveCamera(identity);
  const auto camera = context.host.OpenCamera(identity);
  if (!command.yes &&
      !context.host.Ask("Erase " + SizeText(range.Size()) + " of flash, " + Text(range) +
                        ", of camera " + CameraLine(identity) + "?")) {
    throw Failure(ExitCode::kStopped, "nothing was erased",
                  "Answer y, or give --yes to erase without being asked.");
  }
  std::uint64_t done = 0;
  try {
    EraseSectors(*camera, range, done, context);
  } catch (const Failure& failure) {
    const auto next = static_cast<std::uint32_t>(range.first + done);
    const std::string erased = done == 0 ? "nothing" : Text(Range{range.first, next - 1});
    const bool at_sector = failure.Code() != ExitCode::kStopped;
    throw Failure(failure.Code(),
                  failure.Message() + "; " + erased + " is erased" +
                      (at_sector ? ", the sector at " + Hex(next) + " perhaps" : ""),
                  failure.Hint());
  }
  const Ranges wrong = FindUnerased(*camera, range, context);
  context.result = {{"camera", ToJson(identity)}, {"first", range.first},
                    {"last", range.last},         {"size", range.Size()},
                    {"verified", wrong.empty()},  {"wrong", ToJson(wrong)}};
  if (!wrong.empty()) {
    context.output.Line("Erased " + Text(range) + ", but " + std::to_string(TotalSize(wrong)) +
                        " bytes do not read 0xff: " + RangesText(wrong));
    return ExitCode::kVerify;
  }
  context.output.Line("Erased " + SizeText(range.Size()) + ", " + Text(range) +
                      "; all of it reads 0xff.");
  return ExitCode::kDone;
}
