#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "images/image_format.h"
#include "images/segments.h"

namespace borvanusb {

// The formats of image files that can be read.
enum class ImageForm { kAuto, kRaw, kIntelHex, kSRecord, kElf };

// "raw", "hex", "srec" and "elf", the values of --format; "auto" for kAuto.
std::string_view NameOf(ImageForm form);

// The format that belongs to a file name's extension, such as ".hex", ".srec" or ".elf", in upper
// or lower case. Returns nothing for other names.
std::optional<ImageForm> FormOfName(std::string_view file);

// The format of a file: `wished` unless it is kAuto, else the format of the content, else the one
// of the name, else raw. Returns nothing for contents that can't be read: UF2 and text dumps.
std::optional<ImageForm> FormOf(std::string_view file, std::span<const std::uint8_t> bytes,
                                ImageForm wished);

// Reads a file in any format except kAuto. Raw bytes get the address 0. Throws ImageError.
ImageContent ReadImage(std::span<const std::uint8_t> bytes, ImageForm form);

}  // namespace borvanusb
