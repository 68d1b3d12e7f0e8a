#pragma once

namespace borvan {

// Keeps the library loaded until the process ends, so that a host that unloads it during a job or
// clear task does not unmap running code.
void PinLibrary();

}  // namespace borvan
