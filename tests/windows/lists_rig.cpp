#include "lists_rig.h"

#include <array>
#include <cstdio>

namespace test {

std::string Line(std::uint32_t address, std::uint32_t value) {
  std::array<char, 32> line = {};
  std::snprintf(line.data(), line.size(), "0x%04X,0x%02X,\r\n", static_cast<unsigned>(address),
                static_cast<unsigned>(value));
  return line.data();
}

}  // namespace test
