#pragma once

#include <cstdint>
#include <span>

// How many transfers the library makes for flash work, its queries of a control's length included:
// they take as long as the others.

// A bulk read: two transfers for each packet of 64 bytes. The last byte of whole packets comes by a
// single access, since the job would ask for a packet behind them.
std::uint64_t ReadTransfers(std::uint64_t size);

// Erasing and programming bytes by one job: a transfer for each sector begun and for each packet of
// 60 bytes that is not blank.
std::uint64_t ProgramTransfers(std::span<const std::uint8_t> bytes);

// Writing one word.
constexpr std::uint64_t kWordWriteTransfers = 2;
