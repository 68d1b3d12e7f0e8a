#pragma once

#include <cstdint>
#include <optional>

namespace borvanusb {

// How the I2C commands access the device on the bus.
struct I2cOptions {
  std::optional<std::uint32_t> slave;
  std::int32_t mode = 1;  // 16/8, the mode of most sensors
  std::uint32_t option = 0;
};

}  // namespace borvanusb
