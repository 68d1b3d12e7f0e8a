#pragma once

#include <cstdint>
#include <span>
#include <vector>

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

// Whole sectors in runs with gaps between. Their content is kept as the bytes of one run after
// those of the other.
class SectorSet {
 public:
  SectorSet() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): one span is a set
  SectorSet(const SectorSpan& span) : SectorSet(Ranges{span.Whole()}) {}
  // Of whole sectors, in rising order; two runs don't touch.
  explicit SectorSet(Ranges runs);

  const Ranges& Runs() const { return runs_; }
  std::uint32_t First() const { return runs_.front().first; }
  std::uint64_t End() const { return std::uint64_t{runs_.back().last} + 1; }  // one past the last
  std::uint64_t Size() const { return size_; }                                // in bytes
  // Whether one run holds all of `range`.
  bool Holds(const Range& range) const;
  // Where an address of theirs stands in their content.
  std::uint64_t OffsetOf(std::uint32_t address) const;

  // The part of their content that lies in `range`, which one run holds.
  template <typename Byte>
  std::span<Byte> PartOf(std::span<Byte> content, const Range& range) const {
    return content.subspan(OffsetOf(range.first), range.Size());
  }

 private:
  Ranges runs_;
  std::vector<std::uint64_t> offsets_;  // of the runs
  std::uint64_t size_ = 0;
};

// The sectors that some bytes reach into.
SectorSpan SectorsAround(std::uint32_t address, std::uint64_t size);
SectorSet SectorsAround(const Ranges& bytes);

// The sectors of some bytes that hold other bytes as well; at most two for bytes without gaps.
std::vector<std::uint32_t> HalfUsedSectors(std::uint32_t address, std::uint64_t size);
std::vector<std::uint32_t> HalfUsedSectors(const Ranges& bytes);

// The sectors of a set whose contents differ.
Ranges DifferingSectors(const SectorSet& sectors, std::span<const std::uint8_t> left,
                        std::span<const std::uint8_t> right);

// The sectors' content with the image laid over it.
std::vector<std::uint8_t> LayOver(const SectorSet& sectors, std::vector<std::uint8_t> content,
                                  const Image& image);

// Runs of sectors cut into blocks, each for one job. Between two blocks work can stop.
Ranges CutIntoBlocks(const Ranges& runs);

// How a block is written so that nothing beyond it changes: a job fills its last packet of 60 bytes
// up with zeros, so it gets whole packets alone, and the rest goes word by word.
struct BlockParts {
  std::span<const std::uint8_t> packets;  // a multiple of 60; reaches into the block's last sector
  std::span<const std::uint8_t> tail;     // whole words, at most 56 bytes
};
BlockParts SplitBlock(std::span<const std::uint8_t> block);

// A sector that its words can change without an erase.
struct WordSector {
  std::uint32_t address = 0;
  std::vector<FlashWord> words;
};

// The sectors in `runs` of which bits are cleared alone, in so few words that a job, which erases
// first, takes more transfers. `now` and `after` are the content of `sectors`.
std::vector<WordSector> SectorsOfFewWords(const Ranges& runs, const SectorSet& sectors,
                                          std::span<const std::uint8_t> now,
                                          std::span<const std::uint8_t> after);

// The runs without them.
Ranges WithoutWordSectors(const Ranges& runs, const std::vector<WordSector>& sectors);

// The transfers that writing a block takes.
std::uint64_t BlockTransfers(std::span<const std::uint8_t> block);

}  // namespace borvanusb
