#pragma once

// Splits an image into erases and pieces, and calculates the progress of bulk transfers.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "protocol/chip_commands.h"

namespace borvan {

struct FlashImageLayout {
  std::uint32_t sector_count = 0;  // erases: one per 4096 bytes, rounded up
  std::uint64_t padded_size = 0;   // bytes sent: whole pieces of 60
};

// The layout of an image of `size` bytes.
FlashImageLayout LayOutFlashImage(std::uint32_t size);

// The address of erase number `index`. Sectors are counted from the start address, which is not
// aligned down: the device decides what an unaligned erase clears.
std::uint32_t SectorAddress(std::uint32_t start_address, std::uint32_t index);

// Fills the rest of the last piece with 0x00, deliberately not with the erased state, and appends
// one blank piece, which is never sent.
void PadFlashImage(std::vector<std::uint8_t>& image, const FlashImageLayout& layout);

// True for a piece that an erased sector already contains.
bool IsBlankPiece(std::span<const std::uint8_t, flash::kPieceSize> piece);

// The percentages of an image write: only rising values, without 0 and 100.
class FlashWriteProgress {
 public:
  explicit FlashWriteProgress(std::uint64_t padded_size) : padded_size_(padded_size) {}

  // Must be called once per piece, in order. Returns the percentage to report, if any.
  std::optional<std::int32_t> NextPiece();

 private:
  const std::uint64_t padded_size_;
  std::uint32_t accumulator_ = 0;  // 100 times the offset; wraps at 32 bits, as hosts expect
  std::int32_t last_ = 0;
};

// The percentages of a bulk read of `group_count` whole 8-byte groups. They pass 100 at the end of
// short reads, as hosts expect.
class FlashReadProgress {
 public:
  explicit FlashReadProgress(std::uint32_t group_count) : group_count_(group_count) {}

  // `groups_read` is the number of groups read so far, including the closing one. `group_count`
  // must be above 0.
  std::optional<std::int32_t> After(std::uint32_t groups_read);

 private:
  const std::uint32_t group_count_;
  std::int32_t last_ = 0;
};

}  // namespace borvan
