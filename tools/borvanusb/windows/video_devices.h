#pragma once

#include <string>
#include <vector>

#include "camera/host.h"

namespace borvanusb {

// Appends all devices in the system's category of video inputs, with their names. Returns an empty
// text, or why they can't be listed. Initialises COM on the calling thread.
std::string ListVideoDevices(std::vector<VideoDevice>& devices);

}  // namespace borvanusb
