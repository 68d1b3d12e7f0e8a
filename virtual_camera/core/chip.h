#pragma once

// The chip: takes the command blocks of the seven selectors and prepares their replies.

#include <cstdint>
#include <span>

#include "core/configuration.h"
#include "core/device_state.h"
#include "core/i2c_bus.h"
#include "core/nor_flash.h"

namespace virtual_camera {

// An object is created for each transfer while the device's lock is held. All lasting data is in
// the device's state.
class Chip {
 public:
  Chip(const CameraConfiguration& configuration, DeviceState& state, NorFlash& flash)
      : configuration_(configuration),
        state_(state),
        flash_(flash),
        bus_(configuration, state.registers) {}

  // Executes a block on selector 1 to 7 and replaces the reply of that selector, with zeros if the
  // block requests no reply. A block that is shorter than its command is ignored: the function
  // returns 0x8007001F and keeps the reply. For an unknown block it returns 0x8007001F and sets the
  // reply to zeros.
  std::int32_t Execute(std::uint32_t selector, std::span<const std::uint8_t> data,
                       std::span<const std::uint32_t> stuck_words);

  // How long the flash is busy after the last block, in microseconds.
  std::uint64_t BusyUs() const { return busy_us_; }

 private:
  using Block = std::span<const std::uint8_t>;

  std::int32_t Dispatch(std::uint32_t selector, Block block);

  // chip_registers.cpp
  std::int32_t RegisterCommand(Block block);
  std::int32_t RegisterBlock(Block block);
  std::int32_t RegisterRun(Block block);
  std::int32_t RegisterScatter(Block block);
  std::uint32_t ReadRegister(std::uint32_t address) const;
  void WriteByteRegister(std::uint32_t address, std::uint8_t value);
  std::uint32_t ListPage(std::uint8_t first, std::uint8_t second) const;
  void PrepareWideReply(std::uint32_t value);

  // chip_i2c.cpp
  std::int32_t I2cCommand(Block block);
  std::int32_t I2cSingle(Block block);
  std::int32_t I2cStepRead(Block block);
  std::int32_t I2cStepWrite(Block block);
  std::int32_t I2cBlock(Block block);
  std::int32_t I2cBlockRead(Block block);
  std::int32_t I2cRun(Block block);
  std::int32_t I2cScatter(Block block);
  std::int32_t BusWrite(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                        std::uint32_t value);
  // Returns the value, or its substitute if no device acknowledges; then `reply` receives the
  // failure.
  std::uint32_t BusRead(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                        Reply& reply) const;

  // chip_flash.cpp
  std::int32_t FlashCommand(Block block);
  std::int32_t FastWrite(Block block);
  std::int32_t FastRead(Block block);
  std::int32_t Program(std::uint32_t address, Block bytes);

  Reply& ReplyOf(std::uint32_t selector) { return state_.fields.replies[selector - 1]; }

  const CameraConfiguration& configuration_;
  DeviceState& state_;
  NorFlash& flash_;
  I2cBus bus_;
  std::span<const std::uint32_t> stuck_words_;
  std::uint64_t busy_us_ = 0;
};

}  // namespace virtual_camera
