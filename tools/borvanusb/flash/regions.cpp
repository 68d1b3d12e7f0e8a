#include "flash/regions.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "base/format.h"
#include "base/hex_bytes.h"
#include "base/joined.h"
#include "base/name_pattern.h"
#include "profile/profile_choice.h"

namespace borvanusb {

FlashLayout LayoutFor(const CameraIdentity& camera, Context& context) {
  const std::shared_ptr<const CameraProfile> profile = ProfileFor(camera, context);
  return profile ? profile->flash : FlashLayout();
}

ToldSize SizeFor(std::optional<std::uint64_t> given, const FlashLayout& layout) {
  return given ? ToldSize(given) : ToldSize(layout.size, "from the camera's profile");
}

std::string RegionText(const FlashRegion& region) {
  return Format("{} ({})", region.name, Text(region.range));
}

const FlashRegion& RegionNamed(const FlashLayout& layout, const std::string& name) {
  if (const FlashRegion* const region = layout.Find(name)) {
    return *region;
  }
  if (layout.regions.empty()) {
    throw Failure(
        ExitCode::kUsage,
        Format("region {}: there is no profile that names the regions of this camera's "
               "flash",
               name),
        "Give a profile with --profile, or an address or a range in place of the region.");
  }
  std::vector<std::string> names;
  for (const FlashRegion& region : layout.regions) {
    names.push_back(region.name);
  }
  throw Failure(ExitCode::kUsage, Format("region {}: the profile has no region of this name", name),
                Format("The regions are {}.", Joined(names, ", ")));
}

void RefuseReadOnly(const FlashLayout& layout, const Ranges& ranges, const std::string& what,
                    ExitCode code) {
  for (const FlashRegion& region : layout.regions) {
    const Ranges touched = Within(ranges, region.range);
    if (region.read_only && !touched.empty()) {
      throw Failure(
          code,
          Format("{}: the region {} is read-only, and {} of it would be erased or written", what,
                 RegionText(region), RangesText(touched)),
          "Give a place outside of it. If the region must change, give --force.");
    }
  }
}

bool TouchesReadOnly(const FlashLayout& layout, const Ranges& ranges) {
  return std::ranges::any_of(layout.regions, [&](const FlashRegion& region) {
    return region.read_only && !Within(ranges, region.range).empty();
  });
}

void RefuseUnexpected(const FlashRegion& region, const std::string& file,
                      std::span<const std::uint8_t> bytes) {
  const std::string_view name = std::string_view(file).substr(file.find_last_of("/\\") + 1);
  const bool fits_name =
      region.files.empty() || std::ranges::any_of(region.files, [&](const std::string& pattern) {
        return MatchesPattern(pattern, name);
      });
  if (!fits_name) {
    throw Failure(ExitCode::kFile,
                  Format("{} is not a file for region {}, which accepts {}", file,
                         RegionText(region), Joined(region.files, ", ")),
                  "Check the file and the region. To write it anyway, give --force.");
  }
  const std::span<const std::uint8_t> wanted = region.begins_with;
  const auto found = bytes.first(std::min(wanted.size(), bytes.size()));
  if (!std::ranges::equal(found, wanted)) {
    throw Failure(ExitCode::kFile,
                  Format("{} is not an image for region {}: it begins with {} instead of {}", file,
                         RegionText(region), HexBytes(found), HexBytes(wanted)),
                  "Check the file and the region. To write it anyway, give --force.");
  }
}

}  // namespace borvanusb
