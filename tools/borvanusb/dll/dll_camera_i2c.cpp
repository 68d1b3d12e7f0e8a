// Registers of devices on the I2C bus, one by one and in rows.
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
// One block has no other one to tell it from.
constexpr std::uint64_t kLeastRegisters = 2 * std::uint64_t{kRunBlock};
// A slow bus may take that long for a register.
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

// Replies on this selector have no tag at all.
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

// The chip sends blocks of registers in the 8-bit modes as it does single ones. A block has no
// place for the option, and in the other modes no place for the values.
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

// A job tells only whether its last block arrived; a block that the chip did not read shows as the
// one that was read before it. So the second reading takes a job for each block, after one that
// holds something else.
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
    // Where all blocks are alike nothing tells one from the other.
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

// Whole blocks only: a block that reached behind the run would read registers that nobody named.
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
      // One by one it shows which register does not answer, if any.
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
