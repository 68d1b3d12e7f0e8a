#pragma once

// A virtual camera behind the library in one process, with one bad transfer in it.

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

// What a bad transfer does.
using FaultKind = borvan_test::Fault;

struct Fault {
  std::uint64_t at = 0;  // number of the transfer, from 0 on
  FaultKind kind = FaultKind::kRefused;
  std::uint32_t bytes = 0;  // of a short answer
};

// A transfer as the camera saw it.
struct Transfer {
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;
};

// "transfer 37 (set on selector 5) refused".
std::string ToText(const Fault& fault, const Transfer& transfer);

// What a camera holds when it is plugged in.
struct Content {
  Bytes flash;  // its size is the flash's
  std::map<std::uint32_t, std::uint32_t> registers;
  bool fast_i2c = true;
  std::vector<virtual_camera::SensorConfiguration> sensors;
  // An I2C register (16-bit address) that no device answers for, ever; 0: none.
  std::uint32_t silent_register = 0;
};

class SweptCamera {
 public:
  // A fresh camera.
  void PlugIn(const Content& content);

  // The control for one run of a command, counted from transfer 0 on. The control before it no
  // longer reaches the chip: it answers everything with success, so that a job that was left behind
  // comes to its end.
  std::shared_ptr<borvan::ExtensionUnitControl> Open(const std::optional<Fault>& fault);
  void Close();

  // The transfers since Open.
  std::vector<Transfer> Seen() const;

  // The truth.
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
