#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "flash/engine/byte_ranges.h"
#include "images/segments.h"

namespace borvanusb {

// Bytes and their addresses in the flash, from one file or several.
struct Image {
  std::string file;                // for messages; all names if there are several
  std::vector<std::string> files;  // automatic backups are written beside the first
  Segments segments;               // at least one
  std::string sha256;              // of all bytes in address order
  // The addresses come from the file or from several positions, so --address can't move the image.
  bool has_addresses = false;

  std::uint32_t First() const { return segments.front().address; }
  std::uint64_t End() const { return segments.back().End(); }  // one past the last
  std::uint64_t Size() const { return TotalSize(segments); }   // without gaps

  Ranges Places() const { return PlacesOf(segments); }
  std::vector<PlacedBytes> Named() const;
};

// Makes an image from sorted segments of these files.
Image MakeImage(const std::vector<std::string>& files, Segments segments);

// The SHA-256 of all bytes in address order.
std::string Digest(const Segments& segments);

}  // namespace borvanusb
