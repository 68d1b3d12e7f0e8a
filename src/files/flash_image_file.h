#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace borvan {

// Reads a flash image: all bytes of any file. Only the low 32 bits of the length count. Returns
// nullopt if the file can't be opened; throws FileError if it can't be read completely. The vector
// has spare capacity for the padding that programming adds.
std::optional<std::vector<std::uint8_t>> ReadFlashImage(const std::string& path);

}  // namespace borvan
