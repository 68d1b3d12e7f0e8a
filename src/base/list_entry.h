#pragma once

#include <cstdint>

namespace borvan {

// One setting of a register or I2C list. Reserved addresses are markers (pauses, pages, slave
// address and width), which the list operations interpret.
struct ListEntry {
  std::uint32_t address = 0;
  std::uint32_t value = 0;

  friend bool operator==(const ListEntry&, const ListEntry&) = default;
};

}  // namespace borvan
