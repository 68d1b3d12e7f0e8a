#include "i2c_reading.h"

#include <sstream>

namespace borvan_test {
namespace {

constexpr std::uint32_t kUnset = 0xFFFFFFFF;

std::uint8_t ModeOf(std::uint32_t width_code, I2cPath path) {
  switch (width_code) {
    case 0:
    case 1:
      return 0;
    case 3:
      return 1;
    case 4:
      return 2;
    default:
      return path == I2cPath::kSteps ? 0 : 1;
  }
}

bool IsPause(std::uint32_t milliseconds, I2cPath path) {
  // On the fast path the number is signed, and a negative pause takes no time.
  const bool negative = path == I2cPath::kPackets && milliseconds >= 0x80000000;
  return milliseconds != 0 && milliseconds <= 255 && !negative;
}

}  // namespace

I2cEvent I2cWriteEvent(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                       std::uint32_t value) {
  return {.pause = 0,
          .slave = slave,
          .mode = mode,
          .address = address & (mode == 0 ? 0xFF : 0xFFFF),
          .value = value & (mode == 2 ? 0xFFFF : 0xFF)};
}

I2cReading ReadI2cList(const List& list, I2cPath path) {
  I2cReading reading;
  std::uint32_t slave = kUnset;
  int mode = -1;
  bool slave_was_told = false;
  for (const borvan::ListEntry& entry : list) {
    if (entry.address == 0xFFFF) {
      if (IsPause(entry.value, path)) {
        reading.events.push_back({.pause = entry.value});
      }
      continue;
    }
    if (entry.address == 0xFEF0 || entry.address == 0xFEF1) {
      continue;
    }
    if (entry.address == 0xFFF8) {
      slave = entry.value;
      slave_was_told = true;
      continue;
    }
    if (entry.address == 0xFFFE && slave_was_told) {
      slave_was_told = false;
      mode = ModeOf(entry.value, path);
      if (path == I2cPath::kSteps) {
        // The step path also sends the code to the sensor's register of that address.
        reading.events.push_back(I2cWriteEvent(static_cast<std::uint8_t>(slave),
                                               static_cast<std::uint8_t>(mode), 0xFFFE,
                                               entry.value));
      }
      continue;
    }
    if (slave == kUnset || mode < 0) {
      reading.incomplete = true;
      return reading;
    }
    slave_was_told = false;
    reading.events.push_back(I2cWriteEvent(static_cast<std::uint8_t>(slave),
                                           static_cast<std::uint8_t>(mode), entry.address,
                                           entry.value));
  }
  return reading;
}

I2cOutcome SensorsAfter(const I2cReading& reading, const CameraSetup& setup) {
  I2cOutcome outcome;
  for (const I2cEvent& event : reading.events) {
    if (event.pause != 0) {
      continue;
    }
    const auto sensor = setup.sensors.find(event.slave);
    if (sensor != setup.sensors.end() && sensor->second == event.mode) {
      outcome.registers[{SensorAt(event.slave), event.address}] = event.value;
    } else if (setup.absent_slave_fails) {
      outcome.failure = 0x8007001F;
      return outcome;
    }
  }
  if (reading.incomplete) {
    outcome.failure = 0xE0000008;
  }
  return outcome;
}

std::string ToText(const std::vector<I2cEvent>& events) {
  std::ostringstream text;
  for (const I2cEvent& event : events) {
    if (event.pause != 0) {
      text << "  pause " << std::dec << event.pause << " ms\n";
    } else {
      text << std::hex << "  write 0x" << int{event.slave} << " mode " << int{event.mode} << ": 0x"
           << event.address << " = 0x" << event.value << "\n";
    }
  }
  return text.str();
}

}  // namespace borvan_test
