#pragma once

// The library's device object with a virtual camera behind it, in one process and without an
// operating system between them.

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "protocol/borvan_usb_q7.h"
#include "support/camera_chip.h"

namespace borvan_test {

// Where a register lies: 0 for the chip itself, 1 + slave address for a sensor; then its address.
using Place = std::pair<std::uint32_t, std::uint32_t>;
// Registers that were written, with what they hold.
using Registers = std::map<Place, std::uint32_t>;

constexpr std::uint32_t kChip = 0;
constexpr std::uint32_t SensorAt(std::uint8_t slave) {
  return 1U + slave;
}

struct CameraSetup {
  bool fast_i2c = false;
  std::map<std::uint32_t, std::uint32_t> registers;  // initial values of the chip's registers
  std::map<std::uint8_t, std::uint8_t> sensors;      // width modes by slave address
  bool markers_are_page = false;                     // of register lists; else they change nothing
  bool absent_slave_fails = false;                   // else it takes writes and forgets them
};

// A camera that is listed, selected and freshly powered.
class CameraInProcess {
 public:
  explicit CameraInProcess(const CameraSetup& setup);

  // Shared, as jobs want it.
  const std::shared_ptr<borvan::BorvanUsb_Q7>& Device() const { return device_; }

  // Makes it a chip that errs.
  void TamperWith(MemoryChip::Tampering tampering) { chip_->TamperWith(std::move(tampering)); }

  // All registers get their initial values.
  void PowerCycle();

  // Every register that was written since power-on, in the whole camera.
  Registers Written();

 private:
  std::shared_ptr<MemoryChip> chip_;
  std::shared_ptr<borvan::BorvanUsb_Q7> device_;
};

}  // namespace borvan_test
