#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera/camera.h"

namespace borvanusb {

// Facts read from a camera, for its first profile.
struct CameraFacts {
  CameraIdentity camera;
  std::uint32_t features = 0;  // register 0x1a3
  std::optional<std::uint64_t> flash_size;
  std::string flash_size_reason;  // where the size comes from, or why it is unknown
  // The devices on the I2C bus, if it was scanned: devices that answer, and addresses whose answer
  // may be that of an empty bus.
  bool scanned = false;
  std::vector<std::uint32_t> devices;
  std::vector<std::uint32_t> doubtful;
  std::string mode;  // I2C mode of the scan: "16/8"
  std::string date;  // "2026-11-22"
};

// The text of a profile for the camera. It passes `profile check`.
std::string FirstProfileText(const CameraFacts& facts);

}  // namespace borvanusb
