#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace borvanusb {

// The addresses other than 0 that a file's name tells, without its folder: hexadecimal numbers with
// 0x and up to eight digits that stand alone, as in "firmware-0x20800.bin". Of the names of our
// backups, which begin with the image's, only the backup's own counts. Each address once.
std::vector<std::uint32_t> AddressesInName(const std::string& file);

}  // namespace borvanusb
