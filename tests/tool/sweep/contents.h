#pragma once

#include <string>
#include <vector>

#include "sweep/swept_camera.h"

namespace borvanusb::sweep {

constexpr std::size_t kFlashSize = 0x10000;

// Pseudo-random bytes, the same in each run.
Bytes RandomBytes(std::size_t size, std::uint32_t seed);
// Similar to texts and tables in firmware: 64 bytes that are repeated several times, then others.
Bytes RepeatingBytes(std::size_t size);

struct NamedBytes {
  std::string name;
  Bytes bytes;
};

// Contents of a whole flash: random, blank, all zeros, text with repeats.
std::vector<NamedBytes> FlashContents();

// A camera with this flash and registers of every kind.
Content CameraWith(const Bytes& flash);

Bytes Part(const Bytes& bytes, std::size_t offset, std::size_t size);
Bytes Overlaid(Bytes bytes, std::size_t offset, const Bytes& part);

// "equal", or the first differing byte and the number of differences.
std::string Difference(const Bytes& wanted, const Bytes& found);

}  // namespace borvanusb::sweep
