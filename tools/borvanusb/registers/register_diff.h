#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "registers/list_text.h"

namespace borvanusb {

// Registers and what a list leaves in them: of several values the last.
using RegisterValues = std::map<std::uint32_t, std::uint32_t>;

RegisterValues RegistersOf(const std::vector<ListEntry>& entries);

// A register in which two sides differ; a side without it has no value.
struct RegisterDifference {
  std::uint32_t address = 0;
  std::optional<std::uint32_t> left;
  std::optional<std::uint32_t> right;

  bool operator==(const RegisterDifference&) const = default;
};

// In the order of the addresses.
std::vector<RegisterDifference> CompareRegisters(const RegisterValues& left,
                                                 const RegisterValues& right);

// Bits 16 to 31 of the addresses of a list that has the form of a dump: a 0xfffd and a 0xfffe in
// front and nowhere else, then registers in a row. 0 for any other list: there the two are delay
// values.
std::uint32_t PageOf(const std::vector<ListEntry>& entries);

}  // namespace borvanusb
