#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/exit_code.h"
#include "base/flash_layout.h"
#include "camera/camera.h"
#include "command/context.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_end.h"

namespace borvanusb {

// The flash regions in the camera's profile. None without a profile.
FlashLayout LayoutFor(const CameraIdentity& camera, Context& context);

// The flash size: `given` by --flash-size, else from the profile, else unknown.
ToldSize SizeFor(std::optional<std::uint64_t> given, const FlashLayout& layout);

// Finds a region. Throws Failure kUsage that lists the existing names.
const FlashRegion& RegionNamed(const FlashLayout& layout, const std::string& name);

// "config (0x60000-0x6ffff)"
std::string RegionText(const FlashRegion& region);

// Throws Failure with `code` if a change of `ranges` touches a read-only region. Whole sectors
// count where the change erases. `what` begins the message: "RANGE: 0x0-0xfff".
void RefuseReadOnly(const FlashLayout& layout, const Ranges& ranges, const std::string& what,
                    ExitCode code);

// Whether a change of `ranges` touches a read-only region.
bool TouchesReadOnly(const FlashLayout& layout, const Ranges& ranges);

// Throws Failure kFile if the region expects other files: by the file name, or by the first bytes.
void RefuseUnexpected(const FlashRegion& region, const std::string& file,
                      std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
