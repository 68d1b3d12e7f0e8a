// Command blocks and the simulated chip: the chip must understand each block that a builder makes,
// do what the caller intended, and reply with the values that it holds.

#include <algorithm>
#include <array>
#include <string>

#include "base/hexadecimal_text.h"
#include "protocol/flash_blocks.h"
#include "protocol/i2c_blocks.h"
#include "protocol/register_blocks.h"
#include "support/check.h"
#include "support/input.h"
#include "support/memory_chip.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Input;
using borvan_fuzz::MemoryChip;

// The expected content of the chip.
struct Expected {
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> registers;
  std::vector<std::uint8_t> flash;
};

struct Width {
  std::uint32_t address_mask;
  std::uint32_t data_mask;
};
constexpr std::array<Width, 6> kWidths = {{{0xFF, 0xFF},
                                           {0xFFFF, 0xFF},
                                           {0xFFFF, 0xFFFF},
                                           {0xFFFFFFFF, 0xFF},
                                           {0xFFFFFFFF, 0xFFFF},
                                           {0xFFFFFFFF, 0xFFFFFFFF}}};
constexpr std::uint32_t kSectorSize = 4096;

// The slave address of the sensor with this width mode.
constexpr std::uint8_t SlaveOf(std::uint32_t mode) {
  return static_cast<std::uint8_t>(0x40 + mode);
}

std::uint32_t Value(const std::optional<std::string>& text, const std::string& what) {
  Check(text.has_value(), what + ": the reply is not taken for one");
  return borvan::ParseUnsigned64Low(*text);
}

template <typename Blocks>
void TakeAll(MemoryChip& chip, std::uint32_t selector, const Blocks& blocks) {
  for (const auto& block : blocks) {
    chip.Take(selector, block);
  }
}

void WideRegister(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t address = input.Word();
  if (input.Choice(2) == 0) {
    const std::uint32_t value = input.Word();
    TakeAll(chip, 1, borvan::WideRegisterWrite(address, value));
    expected.registers[{0, address}] = value;
    return;
  }
  TakeAll(chip, 1, borvan::WideRegisterRead(address));
  const auto held = expected.registers.find({0, address});
  const std::uint32_t value = held == expected.registers.end() ? 0 : held->second;
  CheckEqual(Value(borvan::WideReadLowHalf(chip.TakeReply(1).bytes), "low half"), value & 0xFFFF,
             "low half of a register");
  CheckEqual(Value(borvan::WideReadHighHalf(chip.TakeReply(1).bytes), "high half"), value >> 16,
             "high half of a register");
}

void ByteRegister(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t address = input.Word();
  const auto held = expected.registers.find({0, address});
  const std::uint32_t before = held == expected.registers.end() ? 0 : held->second;
  if (input.Choice(2) == 0) {
    const std::uint32_t value = input.Word();
    TakeAll(chip, 1, borvan::ByteRegisterWrite(address, value));
    expected.registers[{0, address}] = (before & 0xFFFFFF00) | (value & 0xFF);
    return;
  }
  TakeAll(chip, 1, borvan::ByteRegisterRead(address));
  CheckEqual(Value(borvan::ByteReadValue(chip.TakeReply(1).bytes), "byte"), before & 0xFF,
             "a register's byte");
}

void RegisterBlockRead(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t run_start = input.Word();
  const std::uint16_t block_start = input.Half();
  std::array<std::uint8_t, 64> block{};
  borvan::PutRegisterBlockRead(std::span(block).first<8>(), run_start, block_start);
  chip.Take(7, block);
  const virtual_camera::Reply reply = chip.TakeReply(7);
  for (std::uint32_t i = 0; i < 56; ++i) {
    const auto held = expected.registers.find({0, ((run_start & 0xFFFF0000) | block_start) + i});
    CheckEqual(reply.bytes.at(8 + i), held == expected.registers.end() ? 0 : held->second & 0xFF,
               "a register of a block");
  }
}

// An invalid mode uses 8 bits for address and data. Only its low byte reaches the chip.
void SingleI2c(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t kind = input.Byte();
  const auto mode = static_cast<std::int32_t>(kind < 0x80 ? kind % 6 : input.Word());
  const bool known = mode >= 0 && mode <= 5;
  if (!known && (mode & 0xFF) <= 5) {
    return;  // the chip would read its low byte as another mode
  }
  const std::uint32_t width = known ? static_cast<std::uint32_t>(mode) : 0;
  const borvan::I2cAccess access = {.slave = SlaveOf(width) | input.Word() << 8,
                                    .register_address = input.Word(),
                                    .mode = mode,
                                    .option = input.Byte()};
  const std::pair<std::uint32_t, std::uint32_t> place = {
      1U + SlaveOf(width), access.register_address & kWidths[width].address_mask};
  const auto held = expected.registers.find(place);
  const std::uint32_t before = held == expected.registers.end() ? 0 : held->second;
  if (input.Choice(2) == 0) {
    const std::uint32_t value = input.Word();
    chip.Take(2, borvan::I2cWriteBlock(access, value));
    expected.registers[place] = value & kWidths[width].data_mask;
    return;
  }
  chip.Take(2, borvan::I2cReadBlock(access));
  const virtual_camera::Reply reply = chip.TakeReply(2);
  CheckEqual(static_cast<std::uint32_t>(reply.result), 0, "the sensor acknowledges");
  borvan::I2cBlock bytes{};
  std::copy_n(reply.bytes.begin(), bytes.size(), bytes.begin());
  const auto text = borvan::I2cReadValue(bytes, mode);
  Check(text.has_value() == known, "a value in a mode that is none, or none in one that is");
  if (text) {
    CheckEqual(borvan::ParseUnsigned64Low(*text), before, "a sensor's register");
  }
}

// Both ways of reading a run of sensor registers return the low byte of each.
void ListI2cRead(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t mode = input.Choice(6);
  const std::uint32_t address = input.Word();
  const auto low_byte = [&](std::uint32_t at) {
    const auto held =
        expected.registers.find({1U + SlaveOf(mode), at & kWidths[mode].address_mask});
    return held == expected.registers.end() ? 0 : held->second & 0xFF;
  };
  std::array<std::uint8_t, 64> block{};
  borvan::PutI2cBlockRead(std::span(block).first<8>(), SlaveOf(mode), mode, address);
  chip.Take(6, block);
  const virtual_camera::Reply reply = chip.TakeReply(6);
  for (std::uint32_t i = 0; i < 56; ++i) {
    CheckEqual(reply.bytes.at(8 + i), low_byte((address & kWidths[mode].address_mask) + i),
               "a sensor's block");
  }
  TakeAll(chip, 2, borvan::I2cStepRead(SlaveOf(mode), mode, address));
  CheckEqual(chip.TakeReply(2).bytes.at(1), low_byte(address & 0xFFFF), "a step read");
}

// Addresses beyond the flash wrap.
void Flash(Input& input, MemoryChip& chip, Expected& expected) {
  const std::uint32_t address = input.Word();
  const auto cell = [&](std::uint32_t offset) -> std::uint8_t& {
    return expected.flash.at((std::uint64_t{address} + offset) % MemoryChip::kFlashSize);
  };
  switch (input.Choice(5)) {
    case 0: {
      const std::uint32_t value = input.Word();
      chip.Take(3, borvan::FlashWriteWord(address, value));
      for (std::uint32_t i = 0; i < 4; ++i) {
        cell(i) &= static_cast<std::uint8_t>(value >> (24 - 8 * i));
      }
      break;
    }
    case 1:
      chip.Take(3, borvan::FlashEraseSector(address));
      std::fill_n(
          expected.flash.begin() + address % MemoryChip::kFlashSize / kSectorSize * kSectorSize,
          kSectorSize, std::uint8_t{0xFF});
      break;
    case 2: {
      chip.Take(3, borvan::FlashReadWord(address));
      const std::uint32_t value = Value(borvan::FlashWordValue(chip.TakeReply(3).bytes), "word");
      for (std::uint32_t i = 0; i < 4; ++i) {
        CheckEqual(value >> (24 - 8 * i) & 0xFF, cell(i), "a byte of a word");
      }
      break;
    }
    case 3: {
      std::vector<std::uint8_t> piece = input.Bytes(60);
      piece.resize(60, 0xFF);
      chip.Take(4, borvan::FlashWritePacket(address, std::span<const std::uint8_t, 60>(piece)));
      for (std::uint32_t i = 0; i < 60; ++i) {
        cell(i) &= piece[i];
      }
      break;
    }
    default: {
      chip.Take(5, borvan::FlashReadRequest(address));
      const virtual_camera::Reply reply = chip.TakeReply(5);
      for (std::uint32_t i = 0; i < 64; ++i) {
        CheckEqual(reply.bytes.at(i), cell(i), "a byte of a fast read");
      }
      break;
    }
  }
}

MemoryChip& ChipWithSensors() {
  static auto& chip = *new MemoryChip;
  if (chip.configuration.sensors.empty()) {
    for (std::uint8_t mode = 0; mode < kWidths.size(); ++mode) {
      chip.configuration.sensors.push_back({.slave = SlaveOf(mode), .mode = mode, .registers = {}});
    }
  }
  return chip;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static bool flash_is_new = false;
  MemoryChip& chip = ChipWithSensors();
  chip.Restart();
  if (!flash_is_new) {
    chip.FillFlash(0xFF);
  }
  Expected expected;
  expected.flash.assign(MemoryChip::kFlashSize, 0xFF);
  flash_is_new = true;
  Input input(data, size);
  while (!input.Empty()) {
    switch (input.Choice(6)) {
      case 0:
        WideRegister(input, chip, expected);
        break;
      case 1:
        ByteRegister(input, chip, expected);
        break;
      case 2:
        RegisterBlockRead(input, chip, expected);
        break;
      case 3:
        SingleI2c(input, chip, expected);
        break;
      case 4:
        ListI2cRead(input, chip, expected);
        break;
      default:
        Flash(input, chip, expected);
        flash_is_new = false;
        break;
    }
  }
  Check(chip.Written() == expected.registers, "the registers are not what was written");
  Check(flash_is_new || chip.Flash() == expected.flash, "the flash is not what was written");
  return 0;
}
