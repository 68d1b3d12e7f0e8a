#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "images/segments.h"

namespace borvan_fuzz {

// Image files read a second time, byte by byte into a map and without a look at the tool's readers.

using ImageBytes = std::map<std::uint64_t, std::uint8_t>;

// Nothing for a file that must be refused.
std::optional<ImageBytes> ModelOfIntelHex(const std::string& file);
std::optional<ImageBytes> ModelOfSRecord(const std::string& file);
std::optional<ImageBytes> ModelOfElf(const std::vector<std::uint8_t>& file);

// What the tool's reader makes of the file must be what the model makes of it. Returns the
// segments; none for a file that is refused.
borvanusb::Segments CheckAgainst(const std::optional<ImageBytes>& model,
                                 const std::function<borvanusb::ImageContent()>& read);

// Bytes as upper-case or lower-case digits.
std::string Digits(const std::vector<std::uint8_t>& bytes, bool small);

}  // namespace borvan_fuzz
