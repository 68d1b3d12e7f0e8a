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

// Handed to the device with the registers that follow. A dump holds bits 24 to 31 and 16 to 23 of
// its addresses there.
constexpr std::uint32_t kFirstDelayMarker = 0xFFFD;
constexpr std::uint32_t kSecondDelayMarker = 0xFFFE;

struct CheckedRegisterList {
  ListText list;
  std::uint64_t registers = 0;
};

// Reads a register list and finds all that would keep it from being written as it stands.
CheckedRegisterList CheckRegisterList(std::string_view text);

// By register of the list: whether it is sent within a block of registers in a row, behind the
// block's first. Markers before such a register are passed over.
std::vector<bool> InsideBlocks(const std::vector<ListEntry>& entries);

// The entries as a list that the library reads as exactly these.
std::string RegisterListText(const std::vector<ListEntry>& entries);

// Values of 8-bit registers of one page as a list that loads back. Registers that have a marker's
// address stand in remarks, because a list can't write them.
std::string RegisterDumpText(const Range& range, std::span<const std::uint32_t> values);

// Values of 32-bit registers as lines "0xADDRESS 0xVALUE", which no list can hold.
std::string WideRegisterDumpText(const Range& range, std::span<const std::uint32_t> values);

}  // namespace borvanusb
