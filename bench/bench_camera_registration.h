#pragma once

namespace bench {

// Lists bench_camera.dll among the video-input devices of the system for as long as it lives.
// Needs the right to write machine-wide class registrations; throws without it.
class CameraRegistration {
 public:
  CameraRegistration();
  CameraRegistration(const CameraRegistration&) = delete;
  CameraRegistration& operator=(const CameraRegistration&) = delete;
  ~CameraRegistration();
};

}  // namespace bench
