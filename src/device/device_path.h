#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvan {

// Converts A to Z to lower case, and nothing else: device paths are compared as the system writes
// them.
std::u16string LowerCasePath(std::u16string_view path);

// True for the path of a USB device. `path` is lower-cased.
bool IsUsbPath(std::u16string_view path);

// Returns the number in the four characters after `marker` ("vid_", "pid_") in a lower-cased path.
// Without the marker, returns the number in characters 3 to 6, as the device list has always done.
std::int32_t ReadPathId(std::u16string_view path, std::u16string_view marker);

}  // namespace borvan
