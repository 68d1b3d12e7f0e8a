#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace borvanusb {

// A firmware image and where it goes.
struct Image {
  std::string file;
  std::vector<std::uint8_t> bytes;
  std::string sha256;
  std::uint32_t address = 0;

  std::uint64_t End() const { return std::uint64_t{address} + bytes.size(); }  // one past the last
};

// Reads an image. Throws Failure: kFile when it can't be read, is empty or does not fit below
// 4 GiB.
Image LoadImage(const std::string& file, std::uint32_t address);

// Refuses an image of nothing but 0xff or nothing but 0x00 bytes: the wrong file, mostly. Throws
// Failure kFile.
void RefuseBlankImage(const Image& image);

}  // namespace borvanusb
