#include "i2c/i2c_run.h"

#include <algorithm>

#include "camera/i2c_failure.h"
#include "camera/register_readings.h"
#include "command/camera_work.h"

namespace borvanusb {

namespace {

// Sixteen blocks take a fraction of a second on a bus of 400 kHz.
constexpr std::uint64_t kPart = 16 * std::uint64_t{kRunBlock};

}  // namespace

std::vector<std::uint32_t> ReadI2cRow(Context& context, Camera& camera, const I2cTarget& target,
                                      const Range& range) {
  RowProgress progress(context, range.Size());
  std::vector<std::uint32_t> values;
  for (std::uint64_t first = range.first; first <= range.last; first += kPart) {
    const std::uint64_t last = std::min<std::uint64_t>(range.last, first + kPart - 1);
    const std::vector<std::uint32_t> part = ExplainingI2c(camera, target, [&] {
      return camera.ReadI2cRun(target, static_cast<std::uint32_t>(first),
                               static_cast<std::uint32_t>(last));
    });
    values.insert(values.end(), part.begin(), part.end());
    progress.Advance(values.size());
  }
  progress.Done();
  return values;
}

}  // namespace borvanusb
