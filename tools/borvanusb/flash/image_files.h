#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "images/read_image.h"
#include "output/output.h"

namespace borvanusb {

// An image file as a command line names it: "app.bin", "app.bin@0x20000", "cfg.bin@region:config".
struct ImageWish {
  std::string file;
  // The flash address of the file's address 0. Raw bytes start at the file's address 0.
  std::optional<std::uint32_t> address = std::nullopt;
  std::string region = {};  // empty: no region

  bool HasPlace() const { return address || !region.empty(); }
};

// Parses such a word. The text after the last @ is a position if it is a number or begins with
// "region:"; otherwise it belongs to the file name. Throws WrongValue.
ImageWish ImageWishValue(const std::string& text);

// The word for an image with its position.
std::string ImageWord(const ImageWish& wish);

// Whether a file of this name and form may contain raw bytes without addresses. Only the content
// can prove it.
bool MayBeRaw(const std::string& file, ImageForm form);

// The content of an image file.
struct ImageFile {
  ImageWish wish;
  ImageForm form = ImageForm::kRaw;
  Segments segments;  // raw bytes start at address 0

  bool HasAddresses() const { return form != ImageForm::kRaw; }
};

// Reads image files. `form` is the value of --format. With `take_any`, a UF2 file or a text dump is
// read as raw bytes instead of being rejected. Throws Failure kFile, and kUsage if the address of a
// file is ambiguous.
std::vector<ImageFile> LoadImageFiles(const std::vector<ImageWish>& wishes, ImageForm form,
                                      bool take_any, Output& output);

// Rejects an image that consists only of 0xff or only of 0x00 bytes, because it is usually the
// wrong file. Throws Failure kFile.
void RefuseBlankImage(const ImageFile& image);

}  // namespace borvanusb
