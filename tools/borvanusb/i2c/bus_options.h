#pragma once

#include <cstdint>
#include <optional>

namespace borvanusb {

// How to speak to the device on the bus, for the I2C commands.
struct I2cOptions {
  std::optional<std::uint32_t> slave;
  std::int32_t mode = 1;  // 16/8, what most sensors have
  std::uint32_t option = 0;
};

}  // namespace borvanusb
