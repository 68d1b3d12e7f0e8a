#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// The parts of a camera's flash that have names.

struct FlashRegion {
  std::string name;
  Range range;
  bool read_only = false;                 // never erased, never written
  std::vector<std::string> files;         // names of image files that belong there: "fw-*.bin";
                                          // empty: any
  std::vector<std::uint8_t> begins_with;  // the first bytes of each image for it; empty: any
  std::string description;
};

// Regions in the order of their addresses; no two overlap.
struct FlashLayout {
  std::optional<std::uint64_t> size;
  std::vector<FlashRegion> regions;
  std::string image_region;  // where an image goes that names no place; empty: address 0

  const FlashRegion* Find(const std::string& name) const {
    for (const FlashRegion& region : regions) {
      if (region.name == name) {
        return &region;
      }
    }
    return nullptr;
  }
};

}  // namespace borvanusb
