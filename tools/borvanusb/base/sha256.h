#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// The SHA-256 digest (FIPS 180-4) of some bytes as 64 lower-case hexadecimal digits: names an
// image's content in reports and journals.
std::string Sha256(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
