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

// The regions of a camera's flash, from its profile; none without a profile.
FlashLayout LayoutFor(const CameraIdentity& camera, Context& context);

// The flash's size: that of --flash-size, else that of the profile, else none.
ToldSize SizeFor(std::optional<std::uint64_t> given, const FlashLayout& layout);

// The region of that name. Throws Failure kUsage that lists those there are.
const FlashRegion& RegionNamed(const FlashLayout& layout, const std::string& name);

// "config (0x60000-0x6ffff)"
std::string RegionText(const FlashRegion& region);

// Refuses a change of `ranges`, whole sectors where it erases, that touches a read-only region.
// `what` begins the message: "RANGE: 0x0-0xfff". Throws Failure with `code`.
void RefuseReadOnly(const FlashLayout& layout, const Ranges& ranges, const std::string& what,
                    ExitCode code);

// Whether a change of `ranges` touches a read-only region.
bool TouchesReadOnly(const FlashLayout& layout, const Ranges& ranges);

// Refuses a file that the region does not expect: by its name, or by the bytes that it begins with.
// Throws Failure kFile.
void RefuseUnexpected(const FlashRegion& region, const std::string& file,
                      std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
