#pragma once

#include <string>
#include <vector>

#include "camera/host.h"

namespace borvanusb {

// Adds the system's category of video inputs, whole, with the names that the system has for them.
// Returns why it can't be listed, empty when it can. Initialises COM on the calling thread.
std::string ListVideoDevices(std::vector<VideoDevice>& devices);

}  // namespace borvanusb
