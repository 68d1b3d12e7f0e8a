#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/numbers.h"
#include "camera/camera.h"
#include "flash/engine/image.h"
#include "output/output.h"

namespace borvanusb {

// The known end of the flash, for a command that works on a part of it.
struct FlashEnd {
  std::optional<std::uint64_t> size;  // in bytes; nothing if unknown
  std::string reason;                 // how it is known: "from --flash-size"
};

// The flash size from the user or the camera's profile.
struct ToldSize {
  std::optional<std::uint64_t> size;
  const char* reason = "from --flash-size";

  ToldSize() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): that of --flash-size
  ToldSize(std::optional<std::uint64_t> told) : size(told) {}
  ToldSize(std::optional<std::uint64_t> told, const char* why) : size(told), reason(why) {}
};

// Checks whether the flash ends before `end`, one past the last address of a part. Uses the `told`
// size, otherwise FindFlashEndBefore(). Prints a remark if the size can't be determined. Returns a
// size if it was told, or if the flash ends before `end`. `head` is the first 64 KiB of the flash
// if already read, else empty.
FlashEnd FindFlashEnd(Camera& camera, std::uint64_t end, const ToldSize& told, Output& output,
                      std::span<const std::uint8_t> head = {});

// Throws Failure kFile if the image ends beyond the flash.
void RefuseBeyondEnd(const Image& image, const FlashEnd& end);

// Checks a range of addresses; `argument` is its name in messages ("RANGE", "ADDR"). Returns the
// size if it is known. Throws Failure kUsage if the range ends beyond the flash.
std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const std::string& argument,
                                              const Range& range, const ToldSize& told,
                                              Output& output);

// The same check for an image at --address. Throws Failure kFile.
std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const Image& image,
                                              const ToldSize& told, Output& output);

// The address range of the whole flash. Uses the `told` size, otherwise detects it and prints a
// remark. Throws Failure kUsage if the size can't be determined.
Range WholeFlash(Camera& camera, const ToldSize& told, Output& output);

}  // namespace borvanusb
