#include "jobs/library_pin.h"

namespace borvan {

// The native build is linked into its programs: nothing can unload it.
void PinLibrary() {}

}  // namespace borvan
