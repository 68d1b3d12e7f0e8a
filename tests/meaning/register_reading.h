#pragma once

#include <cstdint>
#include <map>

#include "list_text.h"

namespace borvan_test {

// What a register list says, read one entry after the other.
struct RegisterReading {
  std::int32_t result = 0;            // what the whole write answers
  std::vector<std::uint32_t> pauses;  // milliseconds, in order
  List writes;                        // registers as 16-bit addresses with 8-bit values
};

RegisterReading ReadRegisterList(const List& list);

// What a freshly powered chip holds after these writes. `initial`: its values at power-on.
Registers ChipAfter(const List& writes, const std::map<std::uint32_t, std::uint32_t>& initial);

}  // namespace borvan_test
