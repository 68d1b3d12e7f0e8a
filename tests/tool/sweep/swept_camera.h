#pragma once

// A virtual camera behind the library in the same process, with one bad transfer.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/configuration.h"
#include "support/camera_chip.h"

namespace borvanusb::sweep {

using Bytes = std::vector<std::uint8_t>;
using Direction = virtual_camera::Direction;

// The effect of a bad transfer.
using FaultKind = borvan_test::Fault;

struct Fault {
  std::uint64_t at = 0;  // number of the transfer, from 0
  FaultKind kind = FaultKind::kRefused;
  std::uint32_t bytes = 0;  // length of a short answer
};

// A transfer as seen by the camera.
struct Transfer {
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;
};

// "transfer 37 (set on selector 5) refused".
std::string ToText(const Fault& fault, const Transfer& transfer);

// The state of a camera when it is plugged in.
struct Content {
  Bytes flash;  // also sets the size of the flash
  std::map<std::uint32_t, std::uint32_t> registers;
  bool fast_i2c = true;
  std::vector<virtual_camera::SensorConfiguration> sensors;
  // An I2C register (16-bit address) for which no device ever answers; 0: none.
  std::uint32_t silent_register = 0;
};

class SweptCamera {
 public:
  // Starts with a new camera.
  void PlugIn(const Content& content);

  // The control for one run of a command; its transfers are numbered from 0. Earlier controls are
  // disconnected from the chip and answer everything with success, so that an abandoned job ends.
  std::shared_ptr<borvan::ExtensionUnitControl> Open(const std::optional<Fault>& fault);
  void Close();

  // The transfers since Open.
  std::vector<Transfer> Seen() const;

  // The real state of the camera.
  Bytes Flash() const { return chip_->Flash(0, flash_size_); }
  std::uint32_t Register(std::uint32_t address) const { return chip_->Register(address); }
  std::uint32_t Sensor(std::uint8_t slave, std::uint32_t address) const {
    return chip_->I2cRegister(slave, address);
  }

 private:
  class Control;

  std::size_t flash_size_ = 0;
  std::uint32_t silent_register_ = 0;
  std::shared_ptr<borvan_test::MemoryChip> chip_;
  std::shared_ptr<Control> control_;
};

}  // namespace borvanusb::sweep
