// Splitting an image: the erases and packets must write the image, padded with zeros to whole
// pieces. No address is written twice, and blank pieces are not sent.

#include <algorithm>
#include <string>
#include <vector>

#include "protocol/flash_blocks.h"
#include "protocol/flash_image.h"
#include "support/check.h"
#include "support/input.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Input;

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPiece = 60;
constexpr std::uint32_t kSector = 4096;
constexpr std::uint8_t kBefore = 0x5A;  // content of the flash before
constexpr std::size_t kLargest = 20'000;

// Runs of equal bytes and of other bytes.
Bytes TakeImage(Input& input) {
  Bytes image;
  while (!input.Empty() && image.size() < kLargest) {
    const std::uint8_t kind = input.Byte();
    if (kind < 0x80) {
      const Bytes bytes = input.Bytes(kind + 1U);
      image.insert(image.end(), bytes.begin(), bytes.end());
    } else {
      image.resize(image.size() + std::size_t{kind & 0x3FU} * 16 + input.Byte(),
                   kind < 0xC0 ? 0xFF : 0x00);
    }
  }
  return image;
}

// The part of a flash of 4 GiB with wrapping addresses that an image may reach.
class Flash {
 public:
  Flash(std::uint32_t start, std::size_t size)
      : start_(start), cells_(size, kBefore), programmed_(size, false) {}

  void Erase(std::uint32_t address) {
    for (std::uint32_t i = 0; i < kSector; ++i) {
      Cell(address + i) = 0xFF;
    }
  }

  void Program(const borvan::Packet& packet) {
    const std::uint32_t address = static_cast<std::uint32_t>(packet[0]) << 24 |
                                  static_cast<std::uint32_t>(packet[1]) << 16 |
                                  static_cast<std::uint32_t>(packet[2]) << 8 | packet[3];
    for (std::uint32_t i = 0; i < kPiece; ++i) {
      Cell(address + i) &= packet.at(4 + i);
      Check(!programmed_[address + i - start_], "an address is written twice");
      programmed_[address + i - start_] = true;
    }
  }

  std::uint8_t& Cell(std::uint32_t address) {
    const std::uint32_t offset = address - start_;
    Check(offset < cells_.size(), "an address that the image does not reach");
    return cells_[offset];
  }

 private:
  const std::uint32_t start_;
  std::vector<std::uint8_t> cells_;
  std::vector<bool> programmed_;
};

void EraseAll(Flash& flash, const borvan::FlashImageLayout& layout, std::uint32_t start) {
  for (std::uint32_t i = 0; i < layout.sector_count; ++i) {
    const std::uint32_t address = borvan::SectorAddress(start, i);
    CheckEqual(address, static_cast<std::uint32_t>(start + i * kSector), "address of an erase");
    flash.Erase(address);
  }
}

void SendAll(Flash& flash, const Bytes& image, const borvan::FlashImageLayout& layout,
             std::uint32_t start) {
  borvan::FlashWriteProgress progress(layout.padded_size);
  std::int32_t last = 0;
  for (std::size_t offset = 0; offset < layout.padded_size; offset += kPiece) {
    const auto piece = std::span(image).subspan(offset).first<kPiece>();
    const bool blank =
        std::all_of(piece.begin(), piece.end(), [](std::uint8_t byte) { return byte == 0xFF; });
    Check(borvan::IsBlankPiece(piece) == blank, "whether a piece is blank");
    if (!blank) {
      flash.Program(borvan::FlashWritePacket(start + static_cast<std::uint32_t>(offset), piece));
    }
    if (const auto percent = progress.NextPiece()) {
      Check(*percent > last && *percent < 100, "a percentage that does not rise, or is none");
      last = *percent;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::uint32_t start = input.Word();
  const Bytes image = TakeImage(input);

  const auto layout = borvan::LayOutFlashImage(static_cast<std::uint32_t>(image.size()));
  CheckEqual(layout.sector_count, (image.size() + kSector - 1) / kSector, "erases");
  CheckEqual(layout.padded_size, (image.size() + kPiece - 1) / kPiece * kPiece, "bytes sent");
  Bytes padded = image;
  borvan::PadFlashImage(padded, layout);
  CheckEqual(padded.size(), layout.padded_size + kPiece, "the padded image and a blank piece");

  Flash flash(start, std::size_t{layout.sector_count} * kSector + kPiece);
  EraseAll(flash, layout, start);
  SendAll(flash, padded, layout, start);
  for (std::size_t i = 0; i < layout.padded_size; ++i) {
    const std::uint32_t address = start + static_cast<std::uint32_t>(i);
    // The last piece may extend beyond the last erased sector. There, zeros clear the old content.
    CheckEqual(flash.Cell(address), i < image.size() ? image[i] : 0x00, "a byte of the flash");
  }
  return 0;
}
