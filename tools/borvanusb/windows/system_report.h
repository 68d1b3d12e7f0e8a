#pragma once

#include "camera/host.h"
#include "windows/loaded_library.h"

namespace borvanusb {

// What `doctor` reports about this machine. Initialises COM on the calling thread.
SystemReport ExamineWindows(const LoadedLibrary& library);

}  // namespace borvanusb
