#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "maps/register_map.h"

namespace borvanusb::tool_test {

// The register with this name; throws if there is none.
inline const MapRegister& Named(const RegisterMap& map, std::string_view name) {
  const auto found = std::ranges::find(map.registers, name, &MapRegister::name);
  if (found == map.registers.end()) {
    throw std::runtime_error("no register " + std::string(name));
  }
  return *found;
}

}  // namespace borvanusb::tool_test
