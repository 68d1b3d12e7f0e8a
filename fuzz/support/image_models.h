#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "images/segments.h"

namespace borvan_fuzz {

// Independent readers of image files. They store byte by byte in a map and share no code with the
// tool's readers.

using ImageBytes = std::map<std::uint64_t, std::uint8_t>;

// Return nothing for a file that must be rejected.
std::optional<ImageBytes> ModelOfIntelHex(const std::string& file);
std::optional<ImageBytes> ModelOfSRecord(const std::string& file);
std::optional<ImageBytes> ModelOfElf(const std::vector<std::uint8_t>& file);

// Checks that the tool's reader gives the same result as the model. Returns the segments; none for
// a rejected file.
borvanusb::Segments CheckAgainst(const std::optional<ImageBytes>& model,
                                 const std::function<borvanusb::ImageContent()>& read);

// Bytes as upper-case or lower-case digits.
std::string Digits(const std::vector<std::uint8_t>& bytes, bool small);

}  // namespace borvan_fuzz
