#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "flash/engine/image.h"

namespace borvanusb {

// Forms of files that describe a flash's bytes in place of holding them.
enum class ImageFormat { kElf, kUf2, kIntelHex, kSRecord, kTextDump };

// Which of them these bytes are, by their structure: the marks at their places, or text that begins
// with lines of which one of the first eight is a whole record with the right checksum. Anything
// else, raw firmware above all, is none.
std::optional<ImageFormat> RecogniseFormat(std::span<const std::uint8_t> bytes);

// Refuses an image of such a form. Throws Failure kFile.
void RefuseOtherFormat(const Image& image);

}  // namespace borvanusb
