#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "camera/camera.h"
#include "dll/camera_library.h"

namespace borvanusb {

// A background job of the library, from start to end.
struct Job {
  const char* doing = "";  // "reading flash"
  // Calls the export. Returns false if the job could not be started.
  std::function<bool(const Exports&)> start;
  // Additional time, beyond the time limit, without a report: for pauses in lists and for erasing.
  std::chrono::milliseconds silence{0};
  // Whether a positive status is the result of the job, as for register lists. For dumps it is a
  // percentage above 100.
  bool notice_is_end = false;
  // Whether only the last report shows the result of the job. The report must then be read before
  // the library clears it.
  bool only_report_tells = false;
  // The total for the numbers that `advance` receives.
  std::uint64_t total = 0;
  const Advance* advance = nullptr;
  // Only for a job that reads: the file that it writes, and the size of this file after success.
  // The file shows the result of the job, because the library may have cleared its report.
  const LibraryPlatform::ScratchFile* file = nullptr;
  std::uint64_t file_size = 0;
};

// The result of a job.
struct JobEnd {
  enum class Outcome {
    kDone,
    kFailed,
    kUnknown  // it has ended, but its last report was cleared before it was read
  };
  Outcome outcome = Outcome::kDone;
  std::uint32_t status = 0;  // a failure's code, or a register list's positive result
};

// Runs a job on the selected camera and waits for its end.
//
// Throws Failure:
//   kTimeout   there is no progress, or an abandoned job may still be running
//   kDevice    the camera was removed
//   kStopped   the user asked to stop; a job that reads gets up to a second to end first
//   kFile      the job can't be started
//   kInternal  the system can't create a thread for the job
//
// If the job may still be running after the exception, it counts as abandoned (see
// CameraLibrary::CheckIdle).
JobEnd RunJob(CameraLibrary& library, const CameraIdentity& camera, const Job& job);

}  // namespace borvanusb
