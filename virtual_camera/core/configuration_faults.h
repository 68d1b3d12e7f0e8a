// Reads `faults` of a camera.
#pragma once

#include <vector>

#include "configuration.h"
#include "json_reader.h"

namespace virtual_camera {

std::vector<FaultConfiguration> ReadFaults(const JsonReader& faults);

}  // namespace virtual_camera
