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

// The sectors that an image reaches into.
SectorSpan SectorsAround(std::uint32_t address, std::uint64_t size);

// The sectors of an image, at most two, that hold other bytes as well.
std::vector<std::uint32_t> HalfUsedSectors(std::uint32_t address, std::uint64_t size);

// The sectors' content with the image laid over it. `content` begins at `sectors.address`.
std::vector<std::uint8_t> LayOver(const SectorSpan& sectors, std::vector<std::uint8_t> content,
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
std::vector<WordSector> SectorsOfFewWords(const Ranges& runs, const SectorSpan& sectors,
                                          std::span<const std::uint8_t> now,
                                          std::span<const std::uint8_t> after);

// The runs without them.
Ranges WithoutWordSectors(const Ranges& runs, const std::vector<WordSector>& sectors);

// The transfers that writing a block takes.
std::uint64_t BlockTransfers(std::span<const std::uint8_t> block);

}  // namespace borvanusb
