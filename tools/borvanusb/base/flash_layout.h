#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// The named regions of a camera's flash.

struct FlashRegion {
  std::string name;
  Range range;
  bool read_only = false;                 // the tool never erases or writes it
  std::vector<std::string> files;         // patterns for names of its image files: "fw-*.bin";
                                          // empty: any name
  std::vector<std::uint8_t> begins_with;  // required first bytes of its images; empty: any
  std::string description;
};

// The regions are sorted by address and do not overlap.
struct FlashLayout {
  std::optional<std::uint64_t> size;
  std::vector<FlashRegion> regions;
  std::string image_region;  // default region for an image without an address; empty: address 0

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
