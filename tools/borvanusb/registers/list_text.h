#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"

namespace borvanusb {

// Parses list files strictly. Anything that the library would ignore, or read as another number
// than it appears to be, is reported as a problem with its line.

// Addresses with a special meaning.
constexpr std::uint32_t kPauseMarker = 0xFFFF;    // milliseconds
constexpr std::uint32_t kDroppedMarker = 0xFFF2;  // the line is ignored
constexpr std::uint32_t kLongestPause = 255;      // the library ignores longer ones

struct ListEntry {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::uint64_t line = 0;  // from 1

  bool operator==(const ListEntry&) const = default;
};

struct ListText {
  std::vector<ListEntry> entries;
  std::vector<ListProblem> problems;  // the list must not be sent
  std::vector<ListProblem> remarks;   // may not do what was intended
};

// Parses a list. Invalid lines produce problems, not entries.
ListText ReadListText(std::string_view text);

// Formats an entry as a line of a list: "0x0100, 0x5a,". The digits are the minimum for each
// number.
std::string ListLine(std::uint32_t address, std::uint32_t value, int address_digits,
                     int value_digits);

// Why the library would ignore a pause. Empty if it does not.
std::string PauseProblem(const ListEntry& pause);

}  // namespace borvanusb
