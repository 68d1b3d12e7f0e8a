#pragma once

// Reads `faults` of a camera.

#include <vector>

#include "core/configuration.h"
#include "core/json_reader.h"

namespace virtual_camera {

std::vector<FaultConfiguration> ReadFaults(const JsonReader& faults);

}  // namespace virtual_camera
