#include "camera/register_readings.h"

namespace borvanusb {

std::vector<Range> CutSecondRun(const Range& run) {
  const std::uint32_t last_block = run.first + (run.last - run.first) / kRunBlock * kRunBlock;
  if (last_block == run.first) {
    return {run};
  }
  const std::uint32_t half = run.first + kRunBlock / 2;
  return {{run.first, half - 1}, {half, last_block - 1}, {last_block, run.last}};
}

}  // namespace borvanusb
