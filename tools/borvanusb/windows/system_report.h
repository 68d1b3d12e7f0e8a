#pragma once

#include "camera/host.h"
#include "windows/loaded_library.h"

namespace borvanusb {

// What `doctor` tells of this machine. Initialises COM on the calling thread.
SystemReport ExamineWindows(const LoadedLibrary& library);

}  // namespace borvanusb
