#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "camera/camera.h"

namespace borvanusb {

// What the flash's addresses show of its size.
struct FlashSizeFinding {
  std::optional<std::uint64_t> size;  // bytes; nothing when it can't be told
  std::string text;                   // what was seen: "wraps at 1 MiB: …"
};

// Looks for the flash's size from 64 KiB to 64 MiB: where its first words show up again, addresses
// wrap; where all words read 0, nothing answers. Reads the first 64 KiB and then single words, some
// 100 transfers for each doubling at most, since a bulk read of addresses that don't answer never
// ends. A single read of a word decides nothing: it is read again. Throws Failure
// as the camera's reads do.
FlashSizeFinding FindFlashSize(Camera& camera);

// The same for one question, in few transfers (some 25 words where the first 64 KiB hold firmware
// and the flash does not end before; else up to the effort of FindFlashSize): whether the flash
// ends before `end`. A finding without a size means that no contradiction was found; its text is
// empty when the addresses were seen to be real. Looks only when `end` lies beyond 64 KiB: every
// flash has that much.
FlashSizeFinding FindFlashEndBefore(Camera& camera, std::uint64_t end);

}  // namespace borvanusb
