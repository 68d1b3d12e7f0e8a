#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvan {

// Lower-cases A to Z, nothing else: device paths are compared as the system writes them.
std::u16string LowerCasePath(std::u16string_view path);

// True for the path of a USB device. `path` is lower-cased.
bool IsUsbPath(std::u16string_view path);

// The number in the four characters behind `marker` ("vid_", "pid_") of a lower-cased path. A path
// without the marker gives the number in its characters 3 to 6, as the device list always did.
std::int32_t ReadPathId(std::u16string_view path, std::u16string_view marker);

}  // namespace borvan
