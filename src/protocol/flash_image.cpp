#include "protocol/flash_image.h"

#include <algorithm>
#include <array>

#include "base/progress_callback.h"

namespace borvan {
namespace {

constexpr std::array<std::uint8_t, flash::kPieceSize> kBlankPiece = [] {
  std::array<std::uint8_t, flash::kPieceSize> piece{};
  piece.fill(flash::kErasedByte);
  return piece;
}();

std::optional<std::int32_t> Rising(std::int32_t percent, std::int32_t& last) {
  if (percent <= last || percent == kDonePercent) {
    return std::nullopt;
  }
  last = percent;
  return percent;
}

}  // namespace

FlashImageLayout LayOutFlashImage(std::uint32_t size) {
  FlashImageLayout layout;
  layout.sector_count = size / flash::kSectorSize + (size % flash::kSectorSize != 0 ? 1 : 0);
  const std::uint64_t over = size % flash::kPieceSize;
  layout.padded_size = over == 0 ? size : size + (flash::kPieceSize - over);
  return layout;
}

std::uint32_t SectorAddress(std::uint32_t start_address, std::uint32_t index) {
  return start_address + flash::kSectorSize * index;
}

void PadFlashImage(std::vector<std::uint8_t>& image, const FlashImageLayout& layout) {
  image.resize(layout.padded_size, 0x00);
  image.insert(image.end(), flash::kPieceSize, flash::kErasedByte);
}

bool IsBlankPiece(std::span<const std::uint8_t, flash::kPieceSize> piece) {
  return std::equal(piece.begin(), piece.end(), kBlankPiece.begin());
}

std::optional<std::int32_t> FlashWriteProgress::NextPiece() {
  const std::uint32_t accumulator = accumulator_;
  accumulator_ += static_cast<std::uint32_t>(flash::kPieceSize) * kDonePercent;
  // Avoids the division for nearly every piece.
  if (accumulator < static_cast<std::uint64_t>(last_ + 1) * padded_size_) {
    return std::nullopt;
  }
  return Rising(static_cast<std::int32_t>(accumulator / padded_size_), last_);
}

std::optional<std::int32_t> FlashReadProgress::After(std::uint32_t groups_read) {
  // 32-bit arithmetic that wraps above 171 MB, so that hosts see the percentages they know.
  const auto scaled =
      static_cast<std::int32_t>(groups_read * static_cast<std::uint32_t>(kDonePercent));
  return Rising(scaled / static_cast<std::int32_t>(group_count_), last_);
}

}  // namespace borvan
