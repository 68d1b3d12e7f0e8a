#pragma once

// Checks that the files of a configuration don't meet.

#include "core/configuration.h"

namespace virtual_camera {

// Throws ConfigurationError when a state or flash file is the configuration itself or serves twice,
// or when a trace is one of these. Cameras may share a trace.
void CheckFiles(const Configuration& configuration);

}  // namespace virtual_camera
