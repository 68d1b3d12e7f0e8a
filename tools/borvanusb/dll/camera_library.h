#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "camera/camera.h"
#include "dll/exports.h"
#include "dll/library_platform.h"
#include "dll/supervisor.h"

namespace borvanusb {

// The loaded library, its cameras and what its status codes mean. One for each process: it knows
// the library's one instance, which camera is selected there and what its jobs left behind.
class CameraLibrary {
 public:
  // `limit`: how long there may be no progress. All must outlive it.
  CameraLibrary(const Exports& exports, LibraryPlatform& platform, Supervisor& supervisor,
                std::chrono::milliseconds limit)
      : exports_(exports), platform_(platform), supervisor_(supervisor), limit_(limit) {}

  const Exports& Functions() const { return exports_; }
  LibraryPlatform& Platform() const { return platform_; }
  Supervisor& Watch() const { return supervisor_; }
  std::chrono::milliseconds Limit() const { return limit_; }
  void SetLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  // Lists the cameras anew, with the names that the system has for them, in the instance that the
  // first call made: a new one would keep what the former has open. Throws Failure kNoCamera.
  std::vector<CameraIdentity> ListCameras();

  // Lists the cameras and opens this one, even when it is selected. Throws Failure: kNoCamera when
  // it isn't listed, kRefused when it can't be opened, kTimeout as CheckIdle.
  void Select(const CameraIdentity& camera);
  // Opens this one unless it is selected.
  void SelectOnce(const CameraIdentity& camera);
  // The next SelectOnce opens the camera anew: it may have been unplugged and plugged in again.
  void Deselect() { selected_.reset(); }

  // Whether the camera is listed now; leaves the selection alone.
  bool IsListed(const CameraIdentity& camera);

  // Remembers a job that nobody waits for any more. `has_ended` tells whether it has come to its
  // end.
  void Abandon(std::function<bool()> has_ended) { abandoned_ = std::move(has_ended); }
  // Throws Failure kTimeout when an abandoned job may still be running: its transfers would mix
  // with those to come, and it may be writing.
  void CheckIdle();

  // Each job that ends well leaves a thread of the library that clears its progress three seconds
  // later. To be called at the end of every job, and before one is started: with too many of these
  // threads it waits until some have ended.
  void NoteJobEnd();
  void LimitClearTasks();
  // Whether one of these threads is about to clear the progress.
  bool ClearTaskIsDue() const;

  // "0xE0000003, Flash write  failed".
  std::string StatusText(std::uint32_t status) const;

 private:
  // Lists the cameras anew. Names are the library's.
  std::vector<CameraIdentity> ListAnew();
  std::vector<CameraIdentity> Listed() const;
  void ForgetEndedClearTasks();

  const Exports& exports_;
  LibraryPlatform& platform_;
  Supervisor& supervisor_;
  std::chrono::milliseconds limit_;
  bool has_instance_ = false;
  std::optional<std::string> selected_;  // path
  std::function<bool()> abandoned_;
  std::deque<Supervisor::Clock::time_point> clear_tasks_;  // when each is due
};

// The failure of a camera that fell off while something was being done.
Failure GoneFailure(const std::string& doing, const CameraIdentity& camera);

// Opens a camera: selects it and asks its chip. Throws Failure as Host::OpenCamera.
std::unique_ptr<Camera> OpenLibraryCamera(CameraLibrary& library, const CameraIdentity& camera);

}  // namespace borvanusb
