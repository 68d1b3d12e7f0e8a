#pragma once

#include <nlohmann/json_fwd.hpp>

#include "camera/camera.h"

namespace borvanusb {

// {"index", "path", "name", "vid", "pid"}.
nlohmann::ordered_json CameraJson(const CameraIdentity& camera);

}  // namespace borvanusb
