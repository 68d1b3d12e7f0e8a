#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "images/image_format.h"
#include "images/segments.h"

namespace borvanusb {

// The formats of image files that are read.
enum class ImageForm { kAuto, kRaw, kIntelHex, kSRecord, kElf };

// "raw", "hex", "srec", "elf", as --format takes them; "auto".
std::string_view NameOf(ImageForm form);

// The form that the end of a file's name stands for: ".hex", ".srec", ".elf" and the like, in
// either case. Nothing for other names.
std::optional<ImageForm> FormOfName(std::string_view file);

// The form of a file that `wished` does not tell: that of the content, else that of the name, else
// raw. Nothing for contents that are not read: UF2 and text dumps.
std::optional<ImageForm> FormOf(std::string_view file, std::span<const std::uint8_t> bytes,
                                ImageForm wished);

// Reads a file of a form other than kAuto. Raw bytes get the address 0. Throws ImageError.
ImageContent ReadImage(std::span<const std::uint8_t> bytes, ImageForm form);

}  // namespace borvanusb
