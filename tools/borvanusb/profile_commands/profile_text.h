#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "profile/camera_profile.h"

namespace borvanusb {

// Prints profiles as lines and as JSON.

// [{"vid", "pid", "name"}]. Parts that are not given are null.
nlohmann::ordered_json CamerasJson(const CameraProfile& profile);
// The whole profile.
nlohmann::ordered_json ProfileJson(const CameraProfile& profile);

// The device of a map: "chip", "chip, 32 bits an access", "I2C slave 0x6c, mode 16/8".
std::string DeviceText(const ProfileMap& map);

// A file name without its folder.
std::string BareName(const std::string& file);

}  // namespace borvanusb
