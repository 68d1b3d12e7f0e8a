#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace borvanusb {

// Forms of files that describe a flash's bytes in place of holding them.
enum class ImageFormat { kElf, kUf2, kIntelHex, kSRecord, kTextDump };

// Which of them these bytes are, by their structure: the marks at their places, or text that begins
// with lines of which one of the first eight is a whole record with the right checksum. Anything
// else, raw firmware above all, is none.
std::optional<ImageFormat> RecogniseFormat(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
