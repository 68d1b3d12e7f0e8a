#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "flash/engine/byte_ranges.h"
#include "images/segments.h"

namespace borvanusb {

// What goes into the flash, and where: the bytes of one file or of several.
struct Image {
  std::string file;                // its name for messages, or the names of all
  std::vector<std::string> files;  // the names; automatic backups go beside the first
  Segments segments;               // at least one
  std::string sha256;              // of all bytes, in the order of their addresses
  // The addresses are those of the file or of several places, so no --address moves the whole.
  bool has_addresses = false;

  std::uint32_t First() const { return segments.front().address; }
  std::uint64_t End() const { return segments.back().End(); }  // one past the last
  std::uint64_t Size() const { return TotalSize(segments); }   // of its bytes, without gaps

  Ranges Places() const { return PlacesOf(segments); }
  std::vector<PlacedBytes> Named() const;
};

// The image of the segments, in rising order, from these files.
Image MakeImage(const std::vector<std::string>& files, Segments segments);

// The SHA-256 of all bytes, in the order of their addresses.
std::string Digest(const Segments& segments);

}  // namespace borvanusb
