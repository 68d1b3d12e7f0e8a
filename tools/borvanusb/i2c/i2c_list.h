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

// Lists of registers of devices on the I2C bus.

struct CheckedI2cList {
  ListText list;
  bool opens_itself = false;           // with 0xfff8; otherwise it needs a device from outside
  std::optional<std::uint32_t> slave;  // the first that it names
  std::uint64_t registers = 0;
};

// Reads an I2C list and finds all that would keep it from being written as it stands.
//   opening  the device for a list that doesn't open with 0xfff8 itself; in modes 3 to 5 the list
//            is not for the library but for WriteI2c, entry by entry
CheckedI2cList CheckI2cList(std::string_view text, const std::optional<I2cTarget>& opening);

// The entries as a list that the library reads as exactly these; `opening`, in one of the modes 0
// to 2, is put in front.
std::string I2cListText(const std::vector<ListEntry>& entries,
                        const std::optional<I2cTarget>& opening);

// Registers' values as a list that loads back: in modes 0 to 2 with its slave and width, in modes 3
// to 5 without, as no list can tell them. Registers that have a marker's address stand in remarks.
std::string I2cDumpText(const I2cTarget& target, const Range& range,
                        std::span<const std::uint32_t> values);

}  // namespace borvanusb
