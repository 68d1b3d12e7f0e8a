#pragma once

// The SPI NOR flash of the camera, stored in a file.

#include <cstdint>
#include <optional>
#include <span>

#include "core/configuration.h"
#include "core/shared_file.h"

namespace virtual_camera {

inline constexpr std::uint32_t kSectorSize = 4096;
inline constexpr std::uint32_t kPageSize = 256;

// Callers must hold the device's lock. Every change is in the file when the call returns.
class NorFlash {
 public:
  // Opens the file. Fills a missing or shorter file with 0xFF up to the size of the flash.
  // Throws ConfigurationError when it can't be opened or is longer than the flash.
  explicit NorFlash(const FlashConfiguration& configuration);

  // Reads from `address`. Returns false if the address is beyond the end and the flash is
  // configured to fail there. If only a part of the transfer is beyond the end, this part then
  // reads as 0xFF.
  bool Read(std::uint32_t address, std::span<std::uint8_t> bytes) const;

  // Sets the sector that contains `address` to 0xFF. Returns the busy time in microseconds, or
  // nothing if the address is beyond the end and the flash is configured to fail there.
  std::optional<std::uint64_t> Erase(std::uint32_t address);

  // Clears the bits that are 0 in `bytes`, page by page. Does not change the words that contain an
  // address of `stuck_words`. Returns like Erase. If the flash is configured to fail beyond its
  // end, bytes beyond the end are ignored.
  std::optional<std::uint64_t> Program(std::uint32_t address, std::span<const std::uint8_t> bytes,
                                       std::span<const std::uint32_t> stuck_words);

 private:
  // Returns the position of a byte in the file. Returns nothing beyond the end.
  std::optional<std::uint64_t> PositionOf(std::uint64_t address) const;
  // How many of `count` bytes from `position` on lie before the end of the flash.
  std::size_t Contiguous(std::uint64_t position, std::size_t count) const;

  FlashConfiguration configuration_;
  SharedFile file_;
};

}  // namespace virtual_camera
