#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "camera/camera.h"
#include "registers/list_markers.h"
#include "registers/list_text.h"
#include "registers/register_diff.h"

namespace borvanusb {

// The values that registers have after a complete list was written, for verification. If a register
// occurs several times, the last value counts. The list must not have problems.

// Registers of the chip, by full address.
RegisterValues WrittenRegisters(const std::vector<ListEntry>& entries, ListMarkers markers);

// The first register that is sent with a marker value other than 0. Its address depends on how the
// chip interprets markers. Null if there is none.
const ListEntry* FirstMarkedRegister(const std::vector<ListEntry>& entries);

// A register of a device on the I2C bus. The address is cut to the bits of the width mode.
struct I2cRegister {
  std::uint32_t slave = 0;
  std::int32_t mode = 0;
  std::uint32_t address = 0;

  bool operator==(const I2cRegister&) const = default;
  bool operator<(const I2cRegister& other) const {
    return std::tie(slave, mode, address) < std::tie(other.slave, other.mode, other.address);
  }
};

struct WrittenI2cRegisters {
  std::map<I2cRegister, std::uint32_t> values;
  // Registers of the list that a later width code overwrites, but only on chips that process lists
  // register by register. The value is the line of the width code.
  std::map<I2cRegister, std::uint64_t> uncertain;
};

// opening  the device, for a list that does not start with 0xfff8
WrittenI2cRegisters WrittenByI2cList(const std::vector<ListEntry>& entries,
                                     const std::optional<I2cTarget>& opening);

}  // namespace borvanusb
