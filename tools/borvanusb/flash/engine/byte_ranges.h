#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// Ranges of flash addresses, sorted and without overlap.
using Ranges = std::vector<Range>;

// The ranges in which two equally long runs of bytes differ. `address` is that of the first byte.
Ranges DifferingBytes(std::uint32_t address, std::span<const std::uint8_t> left,
                      std::span<const std::uint8_t> right);

// The same in whole sectors of 4096 bytes. The runs must start and end at sector boundaries.
Ranges DifferingSectors(std::uint32_t address, std::span<const std::uint8_t> left,
                        std::span<const std::uint8_t> right);

// The number of bytes in all ranges.
std::uint64_t TotalSize(const Ranges& ranges);

// Appends a range. If it follows the last one without a gap, they are joined.
void AppendRange(Ranges& ranges, const Range& range);

// The addresses of `ranges` that are not in `without`.
Ranges Without(const Ranges& ranges, const Ranges& without);

// All addresses of both, joined where they touch.
Ranges Union(Ranges left, const Ranges& right);

// Ranges as text: "0x1000-0x1fff, 0x3000-0x3fff and 5 more".
std::string RangesText(const Ranges& ranges);

// The parts of `ranges` that lie in `range`.
Ranges Within(const Ranges& ranges, const Range& range);

// Whether one of the ranges contains the complete `range`.
bool IsIn(const Ranges& ranges, const Range& range);

// Bytes with the address of the first.
struct PlacedBytes {
  std::uint32_t address = 0;
  std::span<const std::uint8_t> bytes;

  Range Place() const { return {address, static_cast<std::uint32_t>(address + bytes.size() - 1)}; }
};

// The part of `bytes`, which begin at `address`, that lies in `range`.
template <typename Byte>
std::span<Byte> PartOf(std::span<Byte> bytes, std::uint32_t address, const Range& range) {
  return bytes.subspan(range.first - address, range.Size());
}

}  // namespace borvanusb
