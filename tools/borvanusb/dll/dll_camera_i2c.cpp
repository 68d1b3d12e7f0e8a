// Registers of devices on the I2C bus, one by one and in blocks.
#include <algorithm>
#include <span>

#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"
#include "camera/register_readings.h"
#include "dll/dll_camera.h"

namespace borvanusb {

namespace {

constexpr std::int32_t kMode8Bit8Bit = 0;
constexpr std::int32_t kMode16Bit8Bit = 1;
// A stale block is detected by comparison with another block, so at least two are necessary.
constexpr std::uint64_t kLeastRegisters = 2 * std::uint64_t{kRunBlock};
// The time that a slow bus may need for a register.
constexpr std::chrono::milliseconds kSilencePerRegister{5};

}  // namespace

std::uint32_t DllCamera::ReadI2cOnce(const I2cTarget& target, std::uint32_t address) const {
  const Supervisor::Call call(library_.Watch(), "reading over I2C");
  std::uint32_t value = 0;
  if (!library_.Functions().UsbI2cRead(target.slave, address, &value, target.mode, target.option)) {
    Refused(Format("reading I2C register {} of slave {}", Hex(address), Hex(target.slave)));
  }
  return value;
}

// Reads twice, because I2C replies have no tag: an old reply looks like a new one.
std::uint32_t DllCamera::ReadI2cUnlocked(const I2cTarget& target, std::uint32_t address) {
  return ReadTwice([&] { return ReadI2cOnce(target, address); }).value;
}

std::uint32_t DllCamera::ReadI2c(const I2cTarget& target, std::uint32_t address) {
  const auto lock = Lock();
  return ReadI2cUnlocked(target, address);
}

std::uint32_t DllCamera::SampleI2c(const I2cTarget& target, std::uint32_t address) {
  const auto lock = Lock();
  return ReadI2cOnce(target, address);
}

void DllCamera::WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) {
  const auto lock = Lock();
  const Supervisor::Call call(library_.Watch(), "writing over I2C");
  if (!library_.Functions().UsbI2cWrite(target.slave, address, value, target.mode, target.option)) {
    Refused(Format("writing I2C register {} of slave {}", Hex(address), Hex(target.slave)));
  }
}

// The chip supports block reads in the modes with 8-bit values and addresses of up to 16 bits. In
// the other modes a block has no space for the values. A block command has no field for the option.
bool DllCamera::CanReadI2cInBlocks(const I2cTarget& target, std::uint64_t registers) const {
  return has_fast_i2c_ && target.option == 0 && registers >= kLeastRegisters &&
         (target.mode == kMode8Bit8Bit || target.mode == kMode16Bit8Bit);
}

std::vector<std::uint8_t> DllCamera::ReadI2cRunOnce(const I2cTarget& target,
                                                    const Range& run) const {
  Job job;
  job.doing = "reading over I2C";
  job.silence = kSilencePerRegister * static_cast<std::int64_t>(run.Size());
  const std::string what =
      Format("reading I2C registers {} of slave {}", Text(run), Hex(target.slave));
  return Dump(what, run.Size(), job, [&](const Exports& exports, const char* name) {
    return exports.UsbI2CReadFile(run.first, run.last, name,
                                  static_cast<std::int32_t>(target.slave),
                                  static_cast<std::uint32_t>(target.mode));
  });
}

// Reads each block twice. A job reports only whether its last block arrived. If the chip does not
// read a block, the job returns the block before it, without an error. The second reading therefore
// uses one job per block. If necessary, a block with different content is read first, so that a
// stale block can be recognized.
std::vector<std::uint32_t> DllCamera::ReadI2cInBlocks(const I2cTarget& target, const Range& run) {
  const std::vector<std::uint8_t> first = ReadI2cRunOnce(target, run);
  std::vector<std::uint32_t> values(first.begin(), first.end());
  const auto block_at = [&](std::size_t at) { return std::span(first).subspan(at, kRunBlock); };
  const auto range_at = [&](std::size_t at) {
    const auto begin = static_cast<std::uint32_t>(run.first + at);
    return Range{begin, begin + (kRunBlock - 1)};
  };
  std::vector<std::uint8_t> shown(first.end() - kRunBlock, first.end());
  for (std::size_t at = 0; at < first.size(); at += kRunBlock) {
    if (std::ranges::equal(shown, block_at(at))) {
      for (std::size_t other = 0; other < first.size(); other += kRunBlock) {
        if (!std::ranges::equal(block_at(other), block_at(at))) {
          shown = ReadI2cRunOnce(target, range_at(other));
          break;
        }
      }
    }
    // If all blocks are equal, a stale block can't be recognized. Its registers are read one by
    // one.
    const bool is_alike = std::ranges::equal(shown, block_at(at));
    if (!is_alike) {
      shown = ReadI2cRunOnce(target, range_at(at));
      if (!std::ranges::equal(shown, block_at(at))) {
        ++disagreements_;
      }
    }
    for (std::size_t i = at; i < at + kRunBlock; ++i) {
      if (is_alike || shown[i - at] != first[i]) {
        values[i] = ReadI2cUnlocked(target, static_cast<std::uint32_t>(run.first + i));
      }
    }
  }
  return values;
}

// Reads only whole blocks as blocks: a partial one would read registers that were not requested.
// The rest is read one by one.
std::vector<std::uint32_t> DllCamera::ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                                 std::uint32_t last) {
  const std::uint64_t registers = std::uint64_t{last} - first + 1;
  const std::uint64_t in_blocks = registers / kRunBlock * kRunBlock;
  std::vector<std::uint32_t> values;
  if (CanReadI2cInBlocks(target, in_blocks)) {
    try {
      const auto lock = Lock();
      values = ReadI2cInBlocks(target, {first, static_cast<std::uint32_t>(first + in_blocks - 1)});
    } catch (const Failure& failure) {
      // All registers are then read one by one, which shows which register does not answer.
      if (failure.Code() != ExitCode::kDevice) {
        throw;
      }
    }
  }
  for (std::uint64_t address = first + values.size(); address <= last; ++address) {
    values.push_back(ReadI2c(target, static_cast<std::uint32_t>(address)));
  }
  return values;
}

}  // namespace borvanusb
