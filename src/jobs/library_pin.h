#pragma once

namespace borvan {

// Keeps the library loaded until the process ends, so that a host that unloads it beside a running
// job or clear task does not unmap the code they run.
void PinLibrary();

}  // namespace borvan
