#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "camera.h"
#include "failure.h"
#include "library/exports.h"
#include "library/library_platform.h"
#include "library/supervisor.h"

// The loaded library, its cameras and what its status codes mean.
class CameraLibrary {
 public:
  // `limit`: how long nothing may move. All must outlive it.
  CameraLibrary(const Exports& exports, LibraryPlatform& platform, Supervisor& supervisor,
                std::chrono::milliseconds limit)
      : exports_(exports), platform_(platform), supervisor_(supervisor), limit_(limit) {}

  const Exports& Functions() const { return exports_; }
  LibraryPlatform& Platform() const { return platform_; }
  Supervisor& Watch() const { return supervisor_; }
  std::chrono::milliseconds Limit() const { return limit_; }

  // Lists the cameras anew, in a new instance, with the names that the system has for them. Throws
  // Failure kNoCamera.
  std::vector<CameraIdentity> ListCameras() const;

  // A new instance with this camera selected, so that a progress belongs to the next job alone.
  // Throws Failure: kNoCamera when it isn't listed, kRefused when it can't be opened.
  void Select(const CameraIdentity& camera) const;

  // Whether the camera is listed now; leaves the instance and its selection alone.
  bool IsListed(const CameraIdentity& camera) const;

  // "0xE0000003, Flash write  failed".
  std::string StatusText(std::uint32_t status) const;

 private:
  // Lists the cameras anew. Names are the library's.
  std::vector<CameraIdentity> ListAnew() const;
  std::vector<CameraIdentity> Listed() const;

  const Exports& exports_;
  LibraryPlatform& platform_;
  Supervisor& supervisor_;
  const std::chrono::milliseconds limit_;
};

// The failure of a camera that fell off while something was being done.
Failure GoneFailure(const std::string& doing, const CameraIdentity& camera);

// Opens a camera: selects it and asks its chip. Throws Failure as Host::OpenCamera.
std::unique_ptr<Camera> OpenLibraryCamera(const CameraLibrary& library,
                                          const CameraIdentity& camera);
