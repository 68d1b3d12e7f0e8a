#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/flash_layout.h"
#include "flash/engine/image.h"
#include "flash/image_files.h"
#include "output/output.h"

namespace borvanusb {

// Where an image file's bytes go in the flash.
struct PlacedImage {
  std::string file;
  ImageForm form = ImageForm::kRaw;
  std::string region;  // that it was placed in by name; empty: none
  Ranges places;
  std::uint64_t size = 0;  // of its bytes
  std::string sha256;      // of its bytes, in the order of their addresses
};

// Image files at their places, and all of them as one image.
struct Placement {
  std::vector<PlacedImage> files;
  Image image;
};

// Finds the place of each image, by its address, its region, the addresses in the file, or the
// profile's region for images. Throws Failure kFile for an image that does not fit where it goes,
// or that overlaps another; `force` takes a file that a region does not expect.
Placement PlaceImages(std::vector<ImageFile> files, const FlashLayout& layout, bool force,
                      Output& output);

}  // namespace borvanusb
