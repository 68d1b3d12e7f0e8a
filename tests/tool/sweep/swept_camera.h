#pragma once

// A virtual camera behind the library in one process, with one bad transfer in it.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "device/extension_unit_control.h"
#include "virtual_camera/core/configuration.h"
#include "virtual_camera/core/device_state.h"
#include "virtual_camera/core/nor_flash.h"

namespace borvanusb::sweep {

using Bytes = std::vector<std::uint8_t>;
using Direction = virtual_camera::Direction;

// What a bad transfer does. The chip is not reached by the first two.
enum class FaultKind {
  kRefused,  // answers 0x80070017
  kLies,   // answers success: a set does nothing, a get leaves the buffer, a query tells no length
  kShort,  // a get fills the first bytes only and leaves the others
  kWrongTag,  // the reply's tag byte is inverted
};

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

// The chip, its flash and its sensors. Transfers may come from several threads.
class SweptCamera : public std::enable_shared_from_this<SweptCamera> {
 public:
  // The flash lies in this file.
  explicit SweptCamera(std::string flash_file);

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
  Bytes Flash() const;
  std::uint32_t Register(std::uint32_t address) const;
  std::uint32_t Sensor(std::uint8_t slave, std::uint32_t address) const;

 private:
  class Control;
  struct Answer {
    borvan::Result result = 0;
    std::uint32_t bytes = 0;
  };

  Answer Run(std::uint64_t session, const Transfer& transfer, std::span<std::uint8_t> bytes);
  Answer RunFault(const Fault& fault, const Transfer& transfer, std::span<std::uint8_t> bytes);
  Answer RunGood(const Transfer& transfer, std::span<std::uint8_t> bytes);
  bool IsSilent(const Transfer& transfer, std::span<const std::uint8_t> bytes) const;
  Answer Get(std::uint32_t selector, std::span<std::uint8_t> bytes);
  std::uint32_t LengthOf(std::uint32_t selector) const;

  mutable std::mutex mutex_;
  virtual_camera::CameraConfiguration configuration_;
  virtual_camera::DeviceState state_;
  std::uint32_t silent_register_ = 0;
  std::optional<virtual_camera::NorFlash> flash_;
  std::uint64_t session_ = 0;
  bool open_ = false;
  std::optional<Fault> fault_;
  std::vector<Transfer> seen_;
};

}  // namespace borvanusb::sweep
