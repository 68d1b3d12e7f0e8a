#include "flash/engine/image.h"

#include <utility>

#include "base/joined.h"
#include "base/sha256.h"

namespace borvanusb {

std::vector<PlacedBytes> Image::Named() const {
  std::vector<PlacedBytes> named;
  for (const Segment& segment : segments) {
    named.push_back({segment.address, segment.bytes});
  }
  return named;
}

std::string Digest(const Segments& segments) {
  if (segments.size() == 1) {
    return Sha256(segments.front().bytes);
  }
  std::vector<std::uint8_t> all;
  all.reserve(TotalSize(segments));
  for (const Segment& segment : segments) {
    all.insert(all.end(), segment.bytes.begin(), segment.bytes.end());
  }
  return Sha256(all);
}

Image MakeImage(const std::vector<std::string>& files, Segments segments) {
  std::string digest = Digest(segments);
  return {.file = Joined(files, ", "),
          .files = files,
          .segments = std::move(segments),
          .sha256 = std::move(digest),
          .has_addresses = false};
}

}  // namespace borvanusb
