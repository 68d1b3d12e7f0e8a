#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// Returns the SHA-256 digest (FIPS 180-4) as 64 lower-case hexadecimal digits. Reports and journals
// identify the content of an image by it.
std::string Sha256(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
