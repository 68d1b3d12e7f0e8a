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

// What is known of the flash's end before a command works on a part of it.
struct FlashEnd {
  std::optional<std::uint64_t> size;  // bytes; nothing when it is not known
  std::string reason;                 // how it is known: "from --flash-size"
};

// The flash's size as the user or the camera's profile tells it.
struct ToldSize {
  std::optional<std::uint64_t> size;
  const char* reason = "from --flash-size";

  ToldSize() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): that of --flash-size
  ToldSize(std::optional<std::uint64_t> told) : size(told) {}
  ToldSize(std::optional<std::uint64_t> told, const char* why) : size(told), reason(why) {}
};

// Whether the flash ends before `end`, one past the last address of a part: as `told`,
// else as the camera's addresses show, by FindFlashEndBefore. A remark says that the
// size can't be found out. A size is returned when it was told or when the flash ends before `end`.
// `head` is the first 64 KiB of the flash where they were read already, else empty.
FlashEnd FindFlashEnd(Camera& camera, std::uint64_t end, const ToldSize& told, Output& output,
                      std::span<const std::uint8_t> head = {});

// Refuses an image that ends beyond the flash. Throws Failure kFile.
void RefuseBeyondEnd(const Image& image, const FlashEnd& end);

// The look at the flash's end for a range of addresses that `argument` names ("RANGE", "ADDR").
// Returns the size if it is known. Throws Failure kUsage when the range ends beyond the flash.
std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const std::string& argument,
                                              const Range& range, const ToldSize& told,
                                              Output& output);

// The same for an image, which goes to --address. Throws Failure kFile.
std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const Image& image,
                                              const ToldSize& told, Output& output);

// The addresses of the whole flash: of `told` bytes, or of the size that its addresses show, which
// a remark says. Throws Failure kUsage when the size can't be found out.
Range WholeFlash(Camera& camera, const ToldSize& told, Output& output);

}  // namespace borvanusb
