#pragma once

// The chip's I2C bus and the sensors on it.

#include <cstdint>
#include <optional>

#include "core/configuration.h"
#include "core/device_state.h"

namespace virtual_camera {

// A sensor acknowledges transfers in its own width mode only: in another one it would take address
// bytes for data. Its registers hold one value for each address; unwritten ones hold their initial
// value, or 0.
class I2cBus {
 public:
  I2cBus(const CameraConfiguration& configuration, RegisterStore& registers)
      : configuration_(configuration), registers_(registers) {}

  // `mode` is one of the table's width modes. Nothing when nobody acknowledges.
  std::optional<std::uint32_t> Read(std::uint8_t slave, std::uint8_t mode,
                                    std::uint32_t address) const;
  // False when nobody acknowledges.
  bool Write(std::uint8_t slave, std::uint8_t mode, std::uint32_t address, std::uint32_t value);

  // The width mode of the sensor at `slave`; nothing when there is none.
  std::optional<std::uint8_t> ModeOf(std::uint8_t slave) const;

 private:
  const SensorConfiguration* Find(std::uint8_t slave) const;

  const CameraConfiguration& configuration_;
  RegisterStore& registers_;
};

}  // namespace virtual_camera
