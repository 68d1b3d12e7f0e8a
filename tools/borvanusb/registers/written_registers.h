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

// What a list leaves in registers when it was written whole, for reading it back: of several values
// the last. For lists without problems.

// Registers of the chip, by their whole addresses.
RegisterValues WrittenRegisters(const std::vector<ListEntry>& entries, ListMarkers markers);

// The first register that goes to the chip with a marker's value other than 0, so that where it
// lies depends on what the chip takes the markers for. Null if there is none.
const ListEntry* FirstMarkedRegister(const std::vector<ListEntry>& entries);

// A register of a device on the I2C bus, cut to the bits that the width mode has.
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
  // Registers that the list writes and that a width code behind it overwrites on chips that take
  // lists register by register, on others not; with the line of the width code.
  std::map<I2cRegister, std::uint64_t> uncertain;
};

//   opening  the device for a list that does not open with 0xfff8 itself
WrittenI2cRegisters WrittenByI2cList(const std::vector<ListEntry>& entries,
                                     const std::optional<I2cTarget>& opening);

}  // namespace borvanusb
