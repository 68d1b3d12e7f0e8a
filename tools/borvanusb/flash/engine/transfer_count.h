#pragma once

#include <cstdint>
#include <span>

#include "base/numbers.h"
#include "camera/camera.h"

namespace borvanusb {

// The number of USB transfers that the library needs for flash work. This includes its queries of a
// control's length, which take as long as the others.

// A bulk read. Each packet of 64 bytes is read twice, with two transfers each time. If the size is
// a multiple of 64, the last byte is read separately, because the job would otherwise request
// another packet. A read that starts below address 32 needs four more transfers.
std::uint64_t ReadTransfers(std::uint64_t size, std::uint32_t address = kSectorSize);

// Reading registers in blocks. Each block of 56 is read twice.
std::uint64_t RunTransfers(const Range& run);

// Erasing and programming bytes with one job: one transfer for each sector, complete or not, and
// one for each packet of 60 bytes that is not blank.
std::uint64_t ProgramTransfers(std::span<const std::uint8_t> bytes);

// Writing a word.
constexpr std::uint64_t kWordWriteTransfers = 2;

}  // namespace borvanusb
