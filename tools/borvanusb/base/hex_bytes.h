#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Bytes as two lower-case hexadecimal digits each, without anything between.
std::string HexBytes(std::span<const std::uint8_t> bytes);

// The bytes of such a text; nothing when it is none.
std::optional<std::vector<std::uint8_t>> ParseHexBytes(std::string_view text);

}  // namespace borvanusb
