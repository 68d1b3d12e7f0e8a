#pragma once

#include <nlohmann/json_fwd.hpp>

#include "camera/camera.h"

namespace borvanusb {

// Returns an object with "index", "path", "name", "vid" and "pid".
nlohmann::ordered_json CameraJson(const CameraIdentity& camera);

}  // namespace borvanusb
