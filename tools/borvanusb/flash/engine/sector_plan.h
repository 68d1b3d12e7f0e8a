#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/flash_memory.h"
#include "base/numbers.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_words.h"
#include "flash/engine/image.h"

namespace borvanusb {

// Whole sectors of flash around an image.
struct SectorSpan {
  std::uint32_t address = 0;  // of the first sector
  std::uint64_t size = 0;     // a multiple of 4096

  std::uint64_t End() const { return address + size; }  // one past the last
  Range Whole() const { return {address, static_cast<std::uint32_t>(End() - 1)}; }
  bool Holds(const Range& range) const { return range.first >= address && range.last < End(); }
};

// Runs of whole sectors with gaps between them. Their content is stored without the gaps, run after
// run.
class SectorSet {
 public:
  SectorSet() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): one span is a set
  SectorSet(const SectorSpan& span) : SectorSet(Ranges{span.Whole()}) {}
  // Takes whole sectors in rising order. Adjacent runs must have been joined.
  explicit SectorSet(Ranges runs);

  const Ranges& Runs() const { return runs_; }
  std::uint32_t First() const { return runs_.front().first; }
  std::uint64_t End() const { return std::uint64_t{runs_.back().last} + 1; }  // one past the last
  std::uint64_t Size() const { return size_; }                                // in bytes
  // Whether one run contains the complete range.
  bool Holds(const Range& range) const;
  // The position of an address in the content.
  std::uint64_t OffsetOf(std::uint32_t address) const;

  // The part of the content for `range`, which must lie within one run.
  template <typename Byte>
  std::span<Byte> PartOf(std::span<Byte> content, const Range& range) const {
    return content.subspan(OffsetOf(range.first), range.Size());
  }

 private:
  Ranges runs_;
  std::vector<std::uint64_t> offsets_;  // of the runs in the content
  std::uint64_t size_ = 0;
};

// The sector that begins at an address.
constexpr Range SectorAt(std::uint32_t address) {
  return {address, address + (kSectorSize - 1)};
}

// The sectors that contain some of these bytes.
SectorSpan SectorsAround(std::uint32_t address, std::uint64_t size);
SectorSet SectorsAround(const Ranges& bytes);

// Those of the sectors that also contain other bytes. At most two for bytes without gaps.
std::vector<std::uint32_t> HalfUsedSectors(std::uint32_t address, std::uint64_t size);
std::vector<std::uint32_t> HalfUsedSectors(const Ranges& bytes);

// The sectors of a set whose contents differ.
Ranges DifferingSectors(const SectorSet& sectors, std::span<const std::uint8_t> left,
                        std::span<const std::uint8_t> right);

// The content of the sectors with the image written over it.
std::vector<std::uint8_t> LayOver(const SectorSet& sectors, std::vector<std::uint8_t> content,
                                  const Image& image);

// Splits runs of sectors into blocks, one for each job. Work can be stopped between two blocks.
Ranges CutIntoBlocks(const Ranges& runs);

// The parts in which a block is written, so that nothing after it changes. A job pads its last
// packet of 60 bytes with zeros. Therefore it only gets complete packets, and the rest is written
// word by word.
struct BlockParts {
  std::span<const std::uint8_t> packets;  // a multiple of 60; extends into the block's last sector
  std::span<const std::uint8_t> tail;     // whole words, at most 56 bytes
};
BlockParts SplitBlock(std::span<const std::uint8_t> block);

// A sector that can be changed word by word, without an erase.
struct WordSector {
  std::uint32_t address = 0;
  std::vector<FlashWord> words;
};

// The sectors in `runs` that only need to clear bits, in so few words that a job, which erases
// first, would need more transfers. `now` and `after` are the content of `sectors`.
std::vector<WordSector> SectorsOfFewWords(const Ranges& runs, const SectorSet& sectors,
                                          std::span<const std::uint8_t> now,
                                          std::span<const std::uint8_t> after);

// The runs without these sectors.
Ranges WithoutWordSectors(const Ranges& runs, const std::vector<WordSector>& sectors);

// The number of transfers to write a block.
std::uint64_t BlockTransfers(std::span<const std::uint8_t> block);

}  // namespace borvanusb
