#pragma once

// The chip's I2C bus and the sensors on it.

#include <cstdint>
#include <optional>

#include "core/configuration.h"
#include "core/device_state.h"

namespace virtual_camera {

// A sensor acknowledges transfers only in its own width mode, because in another mode it would
// interpret address bytes as data. It has one register value per address. A register that was not
// written has its initial value, or 0.
class I2cBus {
 public:
  I2cBus(const CameraConfiguration& configuration, RegisterStore& registers)
      : configuration_(configuration), registers_(registers) {}

  // `mode` is one of the width modes of the table. Returns nothing if no device acknowledges.
  std::optional<std::uint32_t> Read(std::uint8_t slave, std::uint8_t mode,
                                    std::uint32_t address) const;
  // Returns false if no device acknowledges.
  bool Write(std::uint8_t slave, std::uint8_t mode, std::uint32_t address, std::uint32_t value);

  // Returns the width mode of the sensor at `slave`. Returns nothing if there is none.
  std::optional<std::uint8_t> ModeOf(std::uint8_t slave) const;

 private:
  const SensorConfiguration* Find(std::uint8_t slave) const;

  const CameraConfiguration& configuration_;
  RegisterStore& registers_;
};

}  // namespace virtual_camera
