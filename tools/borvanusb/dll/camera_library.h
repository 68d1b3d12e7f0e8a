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

// The loaded library: its cameras, its jobs and its status codes. A process has one object of this
// class, because the library has one instance per process. The object keeps track of the selected
// camera, an abandoned job, and threads of the library that are still running.
class CameraLibrary {
 public:
  // `limit` is the longest time without progress. The referenced objects must outlive this object.
  CameraLibrary(const Exports& exports, LibraryPlatform& platform, Supervisor& supervisor,
                std::chrono::milliseconds limit)
      : exports_(exports), platform_(platform), supervisor_(supervisor), limit_(limit) {}

  const Exports& Functions() const { return exports_; }
  LibraryPlatform& Platform() const { return platform_; }
  Supervisor& Watch() const { return supervisor_; }
  std::chrono::milliseconds Limit() const { return limit_; }
  void SetLimit(std::chrono::milliseconds limit) { limit_ = limit; }

  // Updates and returns the list of cameras, with their names from the system. Only the first call
  // creates an instance of the library; a second instance would not close the camera that the first
  // one has open. Throws Failure kNoCamera if the list can't be updated.
  std::vector<CameraIdentity> ListCameras();

  // Updates the list and opens the camera, even if it is already selected. Throws Failure:
  // kNoCamera if it is not listed, kRefused if it can't be opened, kTimeout like CheckIdle.
  void Select(const CameraIdentity& camera);
  // Opens the camera unless it is already selected. Throws like Select.
  void SelectOnce(const CameraIdentity& camera);
  // Makes the next SelectOnce open the camera again. For use after a failure, because the camera
  // may have been unplugged and plugged in again.
  void Deselect() { selected_.reset(); }

  // Whether the camera is listed now. Does not change the selection.
  bool IsListed(const CameraIdentity& camera);

  // Records a job that is abandoned: it may still be running, but this program no longer waits for
  // it. `has_ended` returns whether the job has ended.
  void Abandon(std::function<bool()> has_ended) { abandoned_ = std::move(has_ended); }
  // Throws Failure kTimeout if an abandoned job may still be running. Its transfers would interfere
  // with new ones, and it may be writing.
  void CheckIdle();

  // After each successful job, a thread of the library waits three seconds and then clears the
  // progress. NoteJobEnd counts these threads; it must be called at the end of every job.
  // LimitClearTasks must be called before a job is started; it waits while there are too many of
  // these threads. Throws Failure kStopped if the user asks to stop.
  void NoteJobEnd();
  void LimitClearTasks();
  // Whether one of these threads will clear the progress within the next milliseconds.
  bool ClearTaskIsDue() const;

  // Returns a status code with its text: "0xE0000003, Flash write  failed".
  std::string StatusText(std::uint32_t status) const;

 private:
  // Updates and returns the list of cameras, with their names from the library.
  std::vector<CameraIdentity> ListAnew();
  std::vector<CameraIdentity> Listed() const;
  void ForgetEndedClearTasks();

  const Exports& exports_;
  LibraryPlatform& platform_;
  Supervisor& supervisor_;
  std::chrono::milliseconds limit_;
  bool has_instance_ = false;
  std::optional<std::string> selected_;  // path of the selected camera
  std::function<bool()> abandoned_;
  std::deque<Supervisor::Clock::time_point> clear_tasks_;  // when each thread clears the progress
};

// Returns the failure for a camera that was removed during an operation.
Failure GoneFailure(const std::string& doing, const CameraIdentity& camera);

// Opens a camera: selects it and reads the features of its chip. Throws like Host::OpenCamera.
std::unique_ptr<Camera> OpenLibraryCamera(CameraLibrary& library, const CameraIdentity& camera);

}  // namespace borvanusb
