#pragma once

// The yardstick of the bulk transfers: the very property calls that they make, laid out beforehand,
// so that a loop over them does nothing but call.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace bench {

struct ScriptedTransfer {
  std::uint32_t selector = 0;
  bool is_get = false;
  std::uint32_t length = 0;
  std::array<std::uint8_t, 64> bytes{};  // what goes out; a get reads into the loop's own buffer
};

// Erases and pieces of an image at address 0, none of whose pieces is blank.
std::vector<ScriptedTransfer> ScriptProgramming(std::span<const std::uint8_t> image);

// Requests and replies of a read of `size` bytes from address 0.
std::vector<ScriptedTransfer> ScriptReading(std::uint32_t size);

// How many calls these scripts hold.
std::uint64_t ProgrammingTransfers(std::uint32_t size);
std::uint64_t ReadingTransfers(std::uint32_t size);

// Test data: no run of equal bytes, hence no blank piece.
std::vector<std::uint8_t> MakeImage(std::size_t size);

}  // namespace bench
