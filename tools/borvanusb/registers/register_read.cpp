#include "registers/register_read.h"

#include <algorithm>

#include "command/camera_work.h"
#include "names/register_words.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

// A single read takes eight transfers, including its check; a block of 56 registers takes six.
constexpr std::uint64_t kMostSingleReads = 16;
constexpr std::uint32_t kInPage = 0xFFFF;
// Small enough to report progress and notice Ctrl-C at least once a second. A multiple of the 56
// registers that the chip delivers at once.
constexpr std::uint64_t kBlockRun = 7168;

bool IsOnePage(const Range& range) {
  return (range.first & ~kInPage) == (range.last & ~kInPage);
}

std::vector<std::uint32_t> ReadInBlocks(Context& context, Camera& camera, const Range& range) {
  context.progress.Begin("read", range.Size(), ProgressUnit::kRegisters);
  std::vector<std::uint32_t> values;
  for (std::uint64_t first = range.first; first <= range.last; first += kBlockRun) {
    const std::uint64_t last = std::min<std::uint64_t>(range.last, first + kBlockRun - 1);
    const std::vector<std::uint8_t> part =
        camera.ReadRegisterRun(static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last));
    values.insert(values.end(), part.begin(), part.end());
    context.progress.Advance(values.size());
  }
  context.progress.Done();
  return values;
}

}  // namespace

RegisterRead ReadRegisters(Context& context, Camera& camera, const Range& range, bool wide) {
  CheckRegisterCount(range);
  if (!wide && range.Size() > kMostSingleReads && IsOnePage(range)) {
    RegisterRead read{ReadInBlocks(context, camera, range), false};
    context.output.Note(kReadInBlocksNote);
    return read;
  }
  const RegisterWidth width = wide ? RegisterWidth::kWide : RegisterWidth::kByte;
  return {ReadEach(context, range,
                   [&](std::uint32_t address) { return camera.ReadRegister(address, width); }),
          true};
}

}  // namespace borvanusb
