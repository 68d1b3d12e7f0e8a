#pragma once

#include <cstdint>
#include <span>

#include "base/numbers.h"
#include "camera/camera.h"

namespace borvanusb {

// How many transfers the library makes for flash work, its queries of a control's length included:
// they take as long as the others.

// A bulk read: two readings of each packet of 64 bytes, of two transfers each. The last byte of
// whole packets comes by a single access, since the job would ask for a packet behind them. At the
// flash's start, below address 32, a read takes four transfers more.
std::uint64_t ReadTransfers(std::uint64_t size, std::uint32_t address = kSectorSize);

// A run of registers in blocks: two readings of each block of 56.
std::uint64_t RunTransfers(const Range& run);

// Erasing and programming bytes by one job: a transfer for each sector begun and for each packet of
// 60 bytes that is not blank.
std::uint64_t ProgramTransfers(std::span<const std::uint8_t> bytes);

// Writing one word.
constexpr std::uint64_t kWordWriteTransfers = 2;

}  // namespace borvanusb
