#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "camera/camera.h"

namespace borvanusb {

// What the flash's addresses show of its size.
struct FlashSizeFinding {
  std::optional<std::uint64_t> size;  // bytes; nothing when it can't be told
  std::string text;                   // what was seen: "wraps at 1 MiB: …"
};

// What is known before, where a look at the flash's size or end begins: every flash has that much.
inline constexpr std::uint64_t kFlashHead = std::uint64_t{64} << 10U;

// Looks for the flash's size from 64 KiB to 64 MiB: where its first words show up again, addresses
// wrap; where all words read 0, nothing answers. Reads single words, some 70, since a bulk read of
// addresses that don't answer never ends; and all of the first 64 KiB where the words there are too
// few. Throws Failure as the camera's reads do.
FlashSizeFinding FindFlashSize(Camera& camera);

// The same for one question, in some 12 words where the first 64 KiB hold firmware and the flash
// does not end before: whether the flash ends before `end`. A finding without a size means that no
// contradiction was found; its text is empty when the addresses were seen to be real. Looks only
// when `end` lies beyond 64 KiB. `head` is the first 64 KiB where they were read already, else
// empty.
FlashSizeFinding FindFlashEndBefore(Camera& camera, std::uint64_t end,
                                    std::span<const std::uint8_t> head = {});

}  // namespace borvanusb
