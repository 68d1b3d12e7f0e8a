#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "camera/camera.h"

namespace borvanusb {

// The result of detecting the flash size.
struct FlashSizeFinding {
  std::optional<std::uint64_t> size;  // in bytes; nothing if unknown
  std::string text;                   // what was detected: "wraps at 1 MiB: …"
};

// The part that every flash has. Detection starts here.
inline constexpr std::uint64_t kFlashHead = std::uint64_t{64} << 10U;

// Detects the flash size, from 64 KiB to 64 MiB. If the first words appear again at a higher
// address, addresses wrap there. If all words from an address on are 0, the flash does not answer
// there. Reads about 70 single words, because a bulk read of addresses that do not answer never
// ends. Also reads the first 64 KiB completely if they have too few distinctive words. Throws
// Failure as the camera's reads do.
FlashSizeFinding FindFlashSize(Camera& camera);

// A faster check for one question: whether the flash ends before `end`. It takes about 12 words if
// the first 64 KiB contain firmware and the flash does not end before. A result without a size
// means that no contradiction was found; its text is empty if the addresses are proved to exist.
// Nothing is read unless `end` is beyond 64 KiB. `head` is the first 64 KiB if already read, else
// empty.
FlashSizeFinding FindFlashEndBefore(Camera& camera, std::uint64_t end,
                                    std::span<const std::uint8_t> head = {});

}  // namespace borvanusb
