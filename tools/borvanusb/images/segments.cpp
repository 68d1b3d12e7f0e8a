#include "images/segments.h"

#include <algorithm>
#include <iterator>

#include "base/flash_memory.h"
#include "base/format.h"

namespace borvanusb {

namespace {

std::uint64_t EndOf(const std::pair<const std::uint32_t, std::vector<std::uint8_t>>& run) {
  return std::uint64_t{run.first} + run.second.size();
}

[[noreturn]] void RefuseOverlap(const FilePlace& place, std::uint64_t first, std::uint64_t end) {
  throw ImageError(Format("{}: duplicate bytes for {}", place.Text(),
                          borvanusb::Text(Range{static_cast<std::uint32_t>(first),
                                                static_cast<std::uint32_t>(end - 1)})));
}

}  // namespace

std::string FilePlace::Text() const {
  return Format("{} {}", unit, number);
}

void SegmentCollector::Add(std::uint64_t address, std::span<const std::uint8_t> bytes,
                           const FilePlace& place) {
  if (bytes.empty()) {
    return;
  }
  if (address >= kAddressSpace || bytes.size() > kAddressSpace - address) {
    throw ImageError(Format("{}: {} at {} are beyond the last address 0xffffffff", place.Text(),
                            SizeText(bytes.size()), Hex(address)));
  }
  const std::uint64_t end = address + bytes.size();
  const auto next = runs_.upper_bound(static_cast<std::uint32_t>(address));
  if (next != runs_.end() && next->first < end) {
    RefuseOverlap(place, next->first, std::min(end, EndOf(*next)));
  }
  if (next != runs_.begin()) {
    auto& before = *std::prev(next);
    if (EndOf(before) > address) {
      RefuseOverlap(place, address, std::min(end, EndOf(before)));
    }
    if (EndOf(before) == address) {
      before.second.insert(before.second.end(), bytes.begin(), bytes.end());
      return;
    }
  }
  runs_.emplace_hint(next, static_cast<std::uint32_t>(address),
                     std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

Segments SegmentCollector::Take() {
  Segments segments;
  for (auto& [address, bytes] : runs_) {
    if (!segments.empty() && segments.back().End() == address) {
      std::vector<std::uint8_t>& joined = segments.back().bytes;
      joined.insert(joined.end(), bytes.begin(), bytes.end());
    } else {
      segments.push_back({address, std::move(bytes)});
    }
    if (segments.size() > kMostSegments) {
      throw ImageError(Format("it has more than {} separate segments", kMostSegments));
    }
  }
  runs_.clear();
  if (segments.empty()) {
    throw ImageError("it contains no bytes for the flash");
  }
  return segments;
}

std::vector<Range> PlacesOf(const Segments& segments) {
  std::vector<Range> places;
  for (const Segment& segment : segments) {
    places.push_back(segment.Place());
  }
  return places;
}

std::uint64_t TotalSize(const Segments& segments) {
  std::uint64_t size = 0;
  for (const Segment& segment : segments) {
    size += segment.bytes.size();
  }
  return size;
}

Segments Shifted(Segments segments, std::uint32_t offset) {
  for (Segment& segment : segments) {
    if (segment.End() + offset > kAddressSpace) {
      throw ImageError(
          Format("its bytes at {}, moved by {}, are beyond the last address 0xffffffff",
                 Text(segment.Place()), Hex(offset)));
    }
    segment.address += offset;
  }
  return segments;
}

}  // namespace borvanusb
