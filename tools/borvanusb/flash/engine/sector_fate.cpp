#include "flash/engine/sector_fate.h"

#include <algorithm>

#include "base/flash_memory.h"

namespace borvanusb {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kPage = 256;

// Each bit that is set in `fewer` is set in `bytes`.
bool HasBitsOf(Bytes bytes, Bytes fewer) {
  return std::ranges::equal(
      bytes, fewer, [](std::uint8_t byte, std::uint8_t bits) { return (byte & bits) == bits; });
}

bool Holds(const std::vector<std::string>& digests, const std::string& digest) {
  return std::ranges::find(digests, digest) != digests.end();
}

bool IsErased(Bytes bytes) {
  return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == kErased; });
}

}  // namespace

bool IsHalfErased(Bytes found, Bytes original) {
  if (!HasBitsOf(found, original)) {
    return false;
  }
  // An erase affects the whole sector at the same time. If only a part of it is 0xff, these bytes
  // were programmed.
  for (std::size_t offset = 0; offset < found.size(); offset += kPage) {
    const std::size_t size = std::min(kPage, found.size() - offset);
    const Bytes page = original.subspan(offset, size);
    if (!IsErased(page) && std::ranges::equal(found.subspan(offset, size), page)) {
      return false;
    }
  }
  return true;
}

bool IsHalfCleared(Bytes found, Bytes original, Bytes planned) {
  return HasBitsOf(original, found) && HasBitsOf(found, planned);
}

bool IsHalfProgrammed(Bytes found, Bytes planned) {
  const auto differing = std::ranges::mismatch(found, planned).in1;
  const auto written = static_cast<std::size_t>(differing - found.begin());
  // The partial packet begins at the first difference or before it.
  const std::size_t size = std::min<std::size_t>(kWritePacket, found.size() - written);
  return HasBitsOf(found.subspan(written, size), planned.subspan(written, size)) &&
         IsErased(found.subspan(written + size));
}

SectorFate FateOf(Bytes found, const SharedSector& sector, const Ranges& named) {
  const Range whole{sector.address, sector.address + (kSectorSize - 1)};
  const Bytes original = sector.original;
  const bool is_harmed = std::ranges::any_of(Without({whole}, named), [&](const Range& beside) {
    return !std::ranges::equal(PartOf(found, sector.address, beside),
                               PartOf(original, sector.address, beside));
  });
  if (!is_harmed) {
    return SectorFate::kUnharmed;
  }
  if (!CanBeLeftByCut(found, sector)) {
    return SectorFate::kOtherwise;
  }
  return Holds(sector.since, SectorDigest(found)) ? SectorFate::kEither : SectorFate::kOnItsWay;
}

bool CanBeLeftByCut(Bytes found, const SharedSector& sector) {
  return Holds(sector.seen, SectorDigest(found)) || IsHalfErased(found, sector.original) ||
         std::ranges::any_of(sector.planned, [&](Bytes planned) {
           return IsHalfProgrammed(found, planned) || IsHalfErased(found, planned);
         });
}

}  // namespace borvanusb
