#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Returns the bytes as two lower-case hexadecimal digits each, without separators.
std::string HexBytes(std::span<const std::uint8_t> bytes);

// Parses such a text. Returns nothing if the text is invalid.
std::optional<std::vector<std::uint8_t>> ParseHexBytes(std::string_view text);

}  // namespace borvanusb
