#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace borvan {

// The bytes that one transfer on a bulk selector moves.
constexpr std::size_t kPacketLength = 64;

using Packet = std::array<std::uint8_t, kPacketLength>;

}  // namespace borvan
