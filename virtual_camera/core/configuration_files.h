#pragma once

// Checks that no file of a configuration serves two purposes.

#include "core/configuration.h"

namespace virtual_camera {

// Throws ConfigurationError if a state or flash file is the configuration itself or is used twice,
// or if a trace is one of these files. Cameras may share a trace.
void CheckFiles(const Configuration& configuration);

}  // namespace virtual_camera
