#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "maps/register_map.h"

namespace borvanusb {

struct MapCounts {
  std::uint64_t peripherals = 0;
  std::uint64_t registers = 0;
  std::uint64_t fields = 0;
  std::uint64_t values = 0;  // enumerated values
};
MapCounts CountsOf(const RegisterMap& map);

// Prints a map: one line for each register, followed by its fields.
void PrintMap(const RegisterMap& map, const std::function<void(std::string_view)>& print);

// The bits of a field: "[7:4]", "[3]".
std::string BitsText(const MapField& field);

// The peripherals of a map with all registers, fields and values.
nlohmann::ordered_json MapJson(const RegisterMap& map);

}  // namespace borvanusb
