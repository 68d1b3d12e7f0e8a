#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "list_text.h"

namespace borvan_test {

enum class I2cPath { kSteps, kPackets };

// What happens on the bus: a pause, or a write to a sensor.
struct I2cEvent {
  std::uint32_t pause = 0;  // milliseconds; 0 for a write
  std::uint8_t slave = 0;
  std::uint8_t mode = 0;      // 0 to 2
  std::uint32_t address = 0;  // as many bits as the mode has
  std::uint32_t value = 0;    // likewise

  friend bool operator==(const I2cEvent&, const I2cEvent&) = default;
};

// What an I2C list says, read one entry after the other. Pauses of 0 ms are left out.
struct I2cReading {
  std::vector<I2cEvent> events;
  bool incomplete = false;  // ended by a register before slave and width were told
};

I2cReading ReadI2cList(const List& list, I2cPath path);

// A write with address and value cut to what its mode has.
I2cEvent I2cWriteEvent(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                       std::uint32_t value);

// What the sensors of a freshly powered camera hold after a reading, and what the write answers
// when only failures are told apart: 0 for success.
struct I2cOutcome {
  std::uint32_t failure = 0;
  Registers registers;
};
I2cOutcome SensorsAfter(const I2cReading& reading, const CameraSetup& setup);

// "write 0x20 mode 1: 0x3012 = 0x5a" or "pause 5 ms", a line each.
std::string ToText(const std::vector<I2cEvent>& events);

}  // namespace borvan_test
