#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "registers/list_text.h"

namespace borvanusb {

// Registers with the values that a list writes. If a register occurs several times, the last value
// counts.
using RegisterValues = std::map<std::uint32_t, std::uint32_t>;

RegisterValues RegistersOf(const std::vector<ListEntry>& entries);

// A register that differs. A side that does not have it has no value.
struct RegisterDifference {
  std::uint32_t address = 0;
  std::optional<std::uint32_t> left;
  std::optional<std::uint32_t> right;

  bool operator==(const RegisterDifference&) const = default;
};

// Sorted by address.
std::vector<RegisterDifference> CompareRegisters(const RegisterValues& left,
                                                 const RegisterValues& right);

// Bits 16 to 31 of the addresses if the list has the form of a dump: one 0xfffd and one 0xfffe at
// the beginning, then adjacent registers. Returns 0 for any other list, in which the two are delay
// values.
std::uint32_t PageOf(const std::vector<ListEntry>& entries);

}  // namespace borvanusb
