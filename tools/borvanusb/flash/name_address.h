#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace borvanusb {

// The addresses other than 0 in a file name (without its folder): separate hexadecimal numbers with
// 0x and up to eight digits, as in "firmware-0x20800.bin". The name of one of our backups begins
// with that of the image; there only the backup's own address counts. Each address occurs once in
// the result.
std::vector<std::uint32_t> AddressesInName(const std::string& file);

}  // namespace borvanusb
