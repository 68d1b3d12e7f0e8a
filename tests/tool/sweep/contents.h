#pragma once

#include <string>
#include <vector>

#include "sweep/swept_camera.h"

namespace borvanusb::sweep {

constexpr std::size_t kFlashSize = 0x10000;

// Bytes by chance, the same each time.
Bytes RandomBytes(std::size_t size, std::uint32_t seed);
// Like texts and tables in firmware: 64 bytes that come several times, then others.
Bytes RepeatingBytes(std::size_t size);

struct NamedBytes {
  std::string name;
  Bytes bytes;
};

// A whole flash: random, blank, all zeros, text with repeats.
std::vector<NamedBytes> FlashContents();

// A camera with this flash and registers of every kind.
Content CameraWith(const Bytes& flash);

Bytes Part(const Bytes& bytes, std::size_t offset, std::size_t size);
Bytes Overlaid(Bytes bytes, std::size_t offset, const Bytes& part);

// "equal", or the first byte that differs and how many do.
std::string Difference(const Bytes& wanted, const Bytes& found);

}  // namespace borvanusb::sweep
