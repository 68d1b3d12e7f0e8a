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
  // Where the file's address 0 goes, which is the first of raw bytes.
  std::optional<std::uint32_t> address = std::nullopt;
  std::string region = {};  // empty: none is named

  bool HasPlace() const { return address || !region.empty(); }
};

// Splits such a word. What follows the last @ is a place when it is a number or begins with
// "region:"; otherwise it belongs to the file's name. Throws WrongValue.
ImageWish ImageWishValue(const std::string& text);

// The word for an image, with its place.
std::string ImageWord(const ImageWish& wish);

// Whether a file of this name and form may hold raw bytes, which have no address of their own. The
// content tells it for sure.
bool MayBeRaw(const std::string& file, ImageForm form);

// An image file that was read.
struct ImageFile {
  ImageWish wish;
  ImageForm form = ImageForm::kRaw;
  Segments segments;  // of raw bytes, from address 0

  bool HasAddresses() const { return form != ImageForm::kRaw; }
};

// Reads image files. `form` is what --format says; `take_any` takes the bytes of a file that is
// recognised but not read, a UF2 file or a text dump. Throws Failure kFile, and kUsage when it is
// in doubt where the bytes of a file go.
std::vector<ImageFile> LoadImageFiles(const std::vector<ImageWish>& wishes, ImageForm form,
                                      bool take_any, Output& output);

// Refuses an image of nothing but 0xff or nothing but 0x00 bytes: the wrong file, mostly. Throws
// Failure kFile.
void RefuseBlankImage(const ImageFile& image);

}  // namespace borvanusb
