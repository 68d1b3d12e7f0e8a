#pragma once

#include "camera/host.h"
#include "windows/loaded_library.h"

namespace borvanusb {

// Examines this machine for `doctor`. Initialises COM on the calling thread.
SystemReport ExamineWindows(const LoadedLibrary& library);

}  // namespace borvanusb
