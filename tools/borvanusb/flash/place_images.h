#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/flash_layout.h"
#include "flash/engine/image.h"
#include "flash/image_files.h"
#include "output/output.h"

namespace borvanusb {

// The position of an image file in the flash.
struct PlacedImage {
  std::string file;
  ImageForm form = ImageForm::kRaw;
  std::string region;  // empty: not given by a region
  Ranges places;
  std::uint64_t size = 0;  // of its bytes, without gaps
  std::string sha256;      // of all bytes in address order
};

// Image files with their positions, and all of them combined to one image.
struct Placement {
  std::vector<PlacedImage> files;
  Image image;
};

// Determines the position of each image by its address, its region, the addresses in the file, or
// the image region of the profile. Throws Failure kFile if an image does not fit or overlaps
// another one. `force` accepts a file that the region does not expect.
Placement PlaceImages(std::vector<ImageFile> files, const FlashLayout& layout, bool force,
                      Output& output);

}  // namespace borvanusb
