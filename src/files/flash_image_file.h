#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace borvan {

// Reads a flash image: any file, its bytes from first to last. Of the length the low 32 bits count.
// nullopt when the file can't be opened; throws FileError when it can't be read whole.
// The image has room to spare for the padding that programming adds.
std::optional<std::vector<std::uint8_t>> ReadFlashImage(const std::string& path);

}  // namespace borvan
