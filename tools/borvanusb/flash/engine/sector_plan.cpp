#include "flash/engine/sector_plan.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/flash_memory.h"
#include "camera/camera.h"
#include "flash/engine/flash_words.h"
#include "flash/engine/transfer_count.h"

namespace borvanusb {

namespace {

// 30 sectors are a multiple of 60 bytes, so full blocks have no tail.
constexpr std::uint64_t kLargestBlock = 30 * std::uint64_t{kSectorSize};
static_assert(kLargestBlock % kWritePacket == 0);
// The complete packets of a block must reach its last sector, so that the job erases it.
static_assert(kWritePacket < kSectorSize);

}  // namespace

SectorSet::SectorSet(Ranges runs) : runs_(std::move(runs)) {
  for (const Range& run : runs_) {
    offsets_.push_back(size_);
    size_ += run.Size();
  }
}

bool SectorSet::Holds(const Range& range) const {
  return IsIn(runs_, range);
}

std::uint64_t SectorSet::OffsetOf(std::uint32_t address) const {
  const auto behind = std::ranges::upper_bound(runs_, address, {}, &Range::first);
  const auto run = static_cast<std::size_t>(behind - runs_.begin()) - 1;
  return offsets_[run] + (address - runs_[run].first);
}

SectorSet SectorsAround(const Ranges& bytes) {
  Ranges sectors;
  for (const Range& range : bytes) {
    AppendRange(sectors, SectorsAround(range.first, range.Size()).Whole());
  }
  return SectorSet(sectors);
}

SectorSpan SectorsAround(std::uint32_t address, std::uint64_t size) {
  const std::uint32_t first = address / kSectorSize * kSectorSize;
  const std::uint64_t end = (address + size + kSectorSize - 1) / kSectorSize * kSectorSize;
  return {first, end - first};
}

std::vector<std::uint32_t> HalfUsedSectors(std::uint32_t address, std::uint64_t size) {
  const SectorSpan sectors = SectorsAround(address, size);
  std::vector<std::uint32_t> half_used;
  if (address != sectors.address) {
    half_used.push_back(sectors.address);
  }
  const auto last = static_cast<std::uint32_t>(sectors.End() - kSectorSize);
  if (address + size != sectors.End() && (half_used.empty() || half_used.front() != last)) {
    half_used.push_back(last);
  }
  return half_used;
}

std::vector<std::uint32_t> HalfUsedSectors(const Ranges& bytes) {
  std::vector<std::uint32_t> half_used;
  for (const Range& range : bytes) {
    for (const std::uint32_t address : HalfUsedSectors(range.first, range.Size())) {
      if (half_used.empty() || half_used.back() != address) {
        half_used.push_back(address);
      }
    }
  }
  return half_used;
}

Ranges DifferingSectors(const SectorSet& sectors, std::span<const std::uint8_t> left,
                        std::span<const std::uint8_t> right) {
  Ranges differing;
  for (const Range& run : sectors.Runs()) {
    const Ranges here =
        DifferingSectors(run.first, sectors.PartOf(left, run), sectors.PartOf(right, run));
    differing.insert(differing.end(), here.begin(), here.end());
  }
  return differing;
}

std::vector<std::uint8_t> LayOver(const SectorSet& sectors, std::vector<std::uint8_t> content,
                                  const Image& image) {
  for (const Segment& segment : image.segments) {
    std::ranges::copy(segment.bytes, sectors.PartOf(std::span(content), segment.Place()).begin());
  }
  return content;
}

Ranges CutIntoBlocks(const Ranges& runs) {
  Ranges blocks;
  for (const Range& run : runs) {
    for (std::uint64_t start = run.first; start <= run.last; start += kLargestBlock) {
      const std::uint64_t last = std::min<std::uint64_t>(start + kLargestBlock - 1, run.last);
      blocks.push_back({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(last)});
    }
  }
  return blocks;
}

BlockParts SplitBlock(std::span<const std::uint8_t> block) {
  const std::size_t packets = block.size() / kWritePacket * kWritePacket;
  return {block.first(packets), block.subspan(packets)};
}

std::vector<WordSector> SectorsOfFewWords(const Ranges& runs, const SectorSet& sectors,
                                          std::span<const std::uint8_t> now,
                                          std::span<const std::uint8_t> after) {
  std::vector<WordSector> found;
  for (const Range& run : runs) {
    for (std::uint64_t address = run.first; address <= run.last; address += kSectorSize) {
      const auto first = static_cast<std::uint32_t>(address);
      const Range sector{first, first + (kSectorSize - 1)};
      const auto wanted = sectors.PartOf(after, sector);
      auto words = ClearingWords(first, sectors.PartOf(now, sector), wanted);
      if (words && words->size() * kWordWriteTransfers < BlockTransfers(wanted)) {
        found.push_back({first, *std::move(words)});
      }
    }
  }
  return found;
}

Ranges WithoutWordSectors(const Ranges& runs, const std::vector<WordSector>& sectors) {
  Ranges words;
  for (const WordSector& sector : sectors) {
    AppendRange(words, {sector.address, sector.address + (kSectorSize - 1)});
  }
  return Without(runs, words);
}

std::uint64_t BlockTransfers(std::span<const std::uint8_t> block) {
  const BlockParts parts = SplitBlock(block);
  return ProgramTransfers(parts.packets) + TailWords(0, parts.tail).size() * kWordWriteTransfers;
}

}  // namespace borvanusb
