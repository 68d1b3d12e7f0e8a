#pragma once

// The SPI NOR flash behind the chip, kept in a file.

#include <cstdint>
#include <optional>
#include <span>

#include "core/configuration.h"
#include "core/shared_file.h"

namespace virtual_camera {

inline constexpr std::uint32_t kSectorSize = 4096;
inline constexpr std::uint32_t kPageSize = 256;

// Callers hold the device's lock. Every change is in the file when the call returns.
class NorFlash {
 public:
  // Opens the file; fills a missing or shorter one with 0xFF to the flash's size.
  // Throws ConfigurationError when it can't be opened or is longer than the flash.
  explicit NorFlash(const FlashConfiguration& configuration);

  // Reads from `address` on. False when that lies beyond the end and the flash fails there; bytes
  // of a transfer that only runs over the end read as 0xFF then.
  bool Read(std::uint32_t address, std::span<std::uint8_t> bytes) const;

  // Sets the sector that holds `address` to 0xFF. Returns how long the part is busy with it, in
  // microseconds; nothing when the address lies beyond the end and the flash fails there.
  std::optional<std::uint64_t> Erase(std::uint32_t address);

  // Clears the bits that are 0 in `bytes`, page by page. Words at `stuck_words` (any byte address
  // of them) stay as they are. Returns as Erase; bytes that run over the end are dropped when the
  // flash fails there.
  std::optional<std::uint64_t> Program(std::uint32_t address, std::span<const std::uint8_t> bytes,
                                       std::span<const std::uint32_t> stuck_words);

 private:
  // The place of a byte in the file; nothing beyond the end.
  std::optional<std::uint64_t> PositionOf(std::uint64_t address) const;
  // How many of `count` bytes from `position` on lie before the end of the flash.
  std::size_t Contiguous(std::uint64_t position, std::size_t count) const;

  FlashConfiguration configuration_;
  SharedFile file_;
};

}  // namespace virtual_camera
