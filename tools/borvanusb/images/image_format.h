#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace borvanusb {

// File formats that describe the content of a flash, in contrast to raw bytes.
enum class ImageFormat { kElf, kUf2, kIntelHex, kSRecord, kTextDump };

// Detects the format from the structure of the bytes: magic numbers at their offsets, or text in
// which one of the first eight lines is a complete record with a valid checksum. Returns nothing
// for anything else, above all raw firmware.
std::optional<ImageFormat> RecogniseFormat(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
