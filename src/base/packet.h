#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace borvan {

// What one transfer of the bulk selectors carries.
constexpr std::size_t kPacketLength = 64;

using Packet = std::array<std::uint8_t, kPacketLength>;

}  // namespace borvan
