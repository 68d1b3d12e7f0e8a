#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"

namespace borvanusb {

// The lines of a list file, read strictly: whatever the library would pass over, or take for
// another number than it seems, is a problem here and told with its line.

// Addresses that are no registers.
constexpr std::uint32_t kPauseMarker = 0xFFFF;    // milliseconds
constexpr std::uint32_t kDroppedMarker = 0xFFF2;  // the whole line does not count
constexpr std::uint32_t kLongestPause = 255;      // the library passes over longer ones

struct ListEntry {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::uint64_t line = 0;  // from 1 on

  bool operator==(const ListEntry&) const = default;
};

struct ListText {
  std::vector<ListEntry> entries;
  std::vector<ListProblem> problems;  // such a list is not to be sent
  std::vector<ListProblem> remarks;   // it can be sent, but may do something else than meant
};

// Reads a list. Entries of bad lines are left out.
ListText ReadListText(std::string_view text);

// Entries as the lines of a list: "0x0100, 0x5a,". The digits are the least of each number.
std::string ListLine(std::uint32_t address, std::uint32_t value, int address_digits,
                     int value_digits);

// A pause that would be passed over, as text; empty for one that is made.
std::string PauseProblem(const ListEntry& pause);

}  // namespace borvanusb
