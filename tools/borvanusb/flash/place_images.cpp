#include "flash/place_images.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/flash_memory.h"
#include "base/format.h"
#include "flash/regions.h"

namespace borvanusb {

namespace {

// Moves raw bytes to `address`. For a file with addresses, `address` is added to them.
void Move(std::uint32_t address, ImageFile& file) {
  if (!file.HasAddresses() && file.segments.front().End() + address > kAddressSpace) {
    throw Failure(
        ExitCode::kFile,
        Format("{} has {} and would go from {} beyond the last address 0xffffffff", file.wish.file,
               SizeText(file.segments.front().bytes.size()), Hex(address)),
        "Check --address.");
  }
  try {
    file.segments = Shifted(std::move(file.segments), address);
  } catch (const ImageError& error) {
    throw Failure(ExitCode::kFile, Format("{}: {}", file.wish.file, error.what()),
                  "Check --address: it is added to the addresses in the file.");
  }
}

// Throws Failure if two files have bytes for the same address.
void RefuseOverlaps(const std::vector<PlacedImage>& files) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    for (std::size_t other = 0; other < i; ++other) {
      for (const Range& place : files[i].places) {
        if (const Ranges both = Within(files[other].places, place); !both.empty()) {
          throw Failure(ExitCode::kFile,
                        Format("{} and {} overlap: both have bytes for {}", files[other].file,
                               files[i].file, RangesText(both)),
                        "Give each image its own position.");
        }
      }
    }
  }
}

Segments Joined(std::vector<ImageFile> files) {
  SegmentCollector all;
  for (const ImageFile& file : files) {
    for (const Segment& segment : file.segments) {
      all.Add(segment.address, segment.bytes, {"byte", 0});
    }
  }
  try {
    return all.Take();
  } catch (const ImageError& error) {
    throw Failure(ExitCode::kFile, Format("the images: {}", error.what()),
                  "Program them one by one.");
  }
}

class Placer {
 public:
  Placer(const FlashLayout& layout, bool force, Output& output)
      : layout_(layout), force_(force), output_(output) {}

  // Determines the position of the file and moves its bytes there.
  PlacedImage Place(ImageFile& file) {
    PlacedImage placed{file.wish.file, file.form, file.wish.region, {}, 0, {}};
    const bool has_place = file.wish.HasPlace() || file.HasAddresses();
    if (!has_place && !layout_.image_region.empty()) {
      placed.region = layout_.image_region;
      output_.Note(Format("{} goes to the region {}, the profile's region for images", placed.file,
                          RegionText(RegionNamed(layout_, placed.region))));
    }
    if (placed.region.empty()) {
      Move(file.wish.address.value_or(0), file);
    } else {
      PutIntoRegion(RegionNamed(layout_, placed.region), file);
    }
    placed.places = PlacesOf(file.segments);
    placed.size = TotalSize(file.segments);
    placed.sha256 = Digest(file.segments);
    return placed;
  }

 private:
  void PutIntoRegion(const FlashRegion& region, ImageFile& file) const {
    // A file with its own addresses is not moved to the start of the region.
    Move(file.HasAddresses() ? 0 : region.range.first, file);
    const Range place{file.segments.front().address, file.segments.back().Place().last};
    if (!IsIn({region.range}, place)) {
      throw Failure(
          ExitCode::kFile,
          Format("{} does not fit into the region {} of {}: it would go to {}", file.wish.file,
                 RegionText(region), SizeText(region.range.Size()), Text(place)),
          "Check the file and the region.");
    }
    if (!force_) {
      RefuseUnexpected(region, file.wish.file, file.segments.front().bytes);
    }
  }

  const FlashLayout& layout_;
  bool force_;
  Output& output_;
};

}  // namespace

Placement PlaceImages(std::vector<ImageFile> files, const FlashLayout& layout, bool force,
                      Output& output) {
  Placer placer(layout, force, output);
  Placement placement;
  std::vector<std::string> names;
  bool has_addresses = files.size() > 1;
  for (ImageFile& file : files) {
    placement.files.push_back(placer.Place(file));
    names.push_back(file.wish.file);
    has_addresses = has_addresses || file.HasAddresses();
  }
  if (files.size() == 1) {
    placement.image = MakeImage(names, std::move(files.front().segments));
  } else {
    RefuseOverlaps(placement.files);
    placement.image = MakeImage(names, Joined(std::move(files)));
  }
  placement.image.has_addresses = has_addresses;
  return placement;
}

}  // namespace borvanusb
