#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/numbers.h"
#include "registers/list_text.h"

namespace borvanusb {

// Lists of chip registers.

// Sent to the device with the registers that follow. In a dump, they contain bits 24 to 31 and 16
// to 23 of the addresses.
constexpr std::uint32_t kFirstDelayMarker = 0xFFFD;
constexpr std::uint32_t kSecondDelayMarker = 0xFFFE;

struct CheckedRegisterList {
  ListText list;
  std::uint64_t registers = 0;
};

// Parses a register list and finds everything that would prevent it from being written as it is.
CheckedRegisterList CheckRegisterList(std::string_view text);

// For each register of the list, whether it is sent in a block of adjacent registers, but not as
// its first. Markers before such a register are ignored.
std::vector<bool> InsideBlocks(const std::vector<ListEntry>& entries);

// Formats the entries as a list that the library reads without any changes.
std::string RegisterListText(const std::vector<ListEntry>& entries);

// Formats values of 8-bit registers of one page as a list that can be loaded again. Registers at a
// marker's address become remarks, because a list can't write them.
std::string RegisterDumpText(const Range& range, std::span<const std::uint32_t> values);

// Formats values of 32-bit registers as lines "0xADDRESS 0xVALUE". A list can't contain them.
std::string WideRegisterDumpText(const Range& range, std::span<const std::uint32_t> values);

}  // namespace borvanusb
