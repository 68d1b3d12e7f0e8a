#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "registers/list_markers.h"
#include "registers/list_text.h"

namespace borvanusb {

// Lists for devices on the I2C bus.

struct CheckedI2cList {
  ListText list;
  bool opens_itself = false;           // begins with 0xfff8; otherwise the device must be given
  std::optional<std::uint32_t> slave;  // the first one in the list
  std::uint64_t registers = 0;
};

// Parses an I2C list and finds everything that would prevent it from being written as it is.
//   opening  the device, for a list that does not start with 0xfff8. In modes 3 to 5, the list is
//   written with WriteI2c, entry by entry, instead of by the library.
CheckedI2cList CheckI2cList(std::string_view text, const std::optional<I2cTarget>& opening);

// Formats the entries as a list that the library reads without any changes. `opening`, in a mode
// from 0 to 2, is added at the beginning.
std::string I2cListText(const std::vector<ListEntry>& entries,
                        const std::optional<I2cTarget>& opening);

// Formats values as a list that can be loaded again. In modes 0 to 2 it begins with slave and
// width; a list can't express modes 3 to 5. Registers at a marker's address become remarks.
std::string I2cDumpText(const I2cTarget& target, const Range& range,
                        std::span<const std::uint32_t> values);

}  // namespace borvanusb
