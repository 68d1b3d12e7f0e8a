#include "camera/camera_json.h"

#include <nlohmann/json.hpp>

namespace borvanusb {

nlohmann::ordered_json CameraJson(const CameraIdentity& camera) {
  return {{"index", camera.index},
          {"path", camera.path},
          {"name", camera.name},
          {"vid", camera.vid},
          {"pid", camera.pid}};
}

}  // namespace borvanusb
