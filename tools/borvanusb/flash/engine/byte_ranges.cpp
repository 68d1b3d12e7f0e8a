#include "flash/engine/byte_ranges.h"

#include <algorithm>
#include <cstddef>

#include "base/format.h"
#include "camera/camera.h"

namespace borvanusb {

namespace {

constexpr std::size_t kShownRanges = 4;

// The ranges for which `differs` returns true, checked in units of `unit` bytes.
template <typename Differs>
Ranges Collect(std::uint32_t address, std::uint64_t size, std::uint64_t unit,
               const Differs& differs) {
  Ranges ranges;
  for (std::uint64_t offset = 0; offset < size; offset += unit) {
    if (differs(offset)) {
      AppendRange(ranges, {static_cast<std::uint32_t>(address + offset),
                           static_cast<std::uint32_t>(address + offset + unit - 1)});
    }
  }
  return ranges;
}

}  // namespace

Ranges DifferingBytes(std::uint32_t address, std::span<const std::uint8_t> left,
                      std::span<const std::uint8_t> right) {
  return Collect(address, left.size(), 1,
                 [&](std::uint64_t offset) { return left[offset] != right[offset]; });
}

Ranges DifferingSectors(std::uint32_t address, std::span<const std::uint8_t> left,
                        std::span<const std::uint8_t> right) {
  return Collect(address, left.size(), kSectorSize, [&](std::uint64_t offset) {
    return !std::ranges::equal(left.subspan(offset, kSectorSize),
                               right.subspan(offset, kSectorSize));
  });
}

std::uint64_t TotalSize(const Ranges& ranges) {
  std::uint64_t size = 0;
  for (const Range& range : ranges) {
    size += range.Size();
  }
  return size;
}

void AppendRange(Ranges& ranges, const Range& range) {
  if (!ranges.empty() && std::uint64_t{ranges.back().last} + 1 >= range.first) {
    ranges.back().last = std::max(ranges.back().last, range.last);
  } else {
    ranges.push_back(range);
  }
}

Ranges Without(const Ranges& ranges, const Ranges& without) {
  Ranges left;
  for (Range range : ranges) {
    bool whole = false;
    for (const Range& hole : without) {
      if (hole.last < range.first || hole.first > range.last) {
        continue;
      }
      if (hole.first > range.first) {
        left.push_back({range.first, hole.first - 1});
      }
      whole = hole.last >= range.last;
      if (whole) {
        break;
      }
      range.first = hole.last + 1;
    }
    if (!whole) {
      left.push_back(range);
    }
  }
  return left;
}

Ranges Union(Ranges left, const Ranges& right) {
  left.insert(left.end(), right.begin(), right.end());
  std::ranges::sort(left, {}, &Range::first);
  Ranges joined;
  for (const Range& range : left) {
    AppendRange(joined, range);
  }
  return joined;
}

Ranges Within(const Ranges& ranges, const Range& range) {
  Ranges within;
  for (const Range& part : ranges) {
    if (part.first <= range.last && range.first <= part.last) {
      within.push_back({std::max(part.first, range.first), std::min(part.last, range.last)});
    }
  }
  return within;
}

bool IsIn(const Ranges& ranges, const Range& range) {
  return std::ranges::any_of(ranges, [&](const Range& whole) {
    return whole.first <= range.first && range.last <= whole.last;
  });
}

std::string RangesText(const Ranges& ranges) {
  std::string text;
  for (std::size_t i = 0; i < ranges.size() && i < kShownRanges; ++i) {
    text += Format("{}{}", i > 0 ? ", " : "", Text(ranges[i]));
  }
  if (ranges.size() > kShownRanges) {
    text += Format(" and {} more", ranges.size() - kShownRanges);
  }
  return text;
}

}  // namespace borvanusb
