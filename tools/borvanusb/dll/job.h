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
  // Calls the export; false when it could not be started.
  std::function<bool(const Exports&)> start;
  // How long it may report nothing, beside the time limit: pauses in lists, erasing.
  std::chrono::milliseconds silence{0};
  // A positive status is the end (register lists) instead of a percentage past 100 (dumps).
  bool notice_is_end = false;
  // Nothing but its last report tells how it ended, so that must be seen before it is cleared.
  bool only_report_tells = false;
  // The whole, of which `advance` hears the part that is done.
  std::uint64_t total = 0;
  const Advance* advance = nullptr;
  // Of a job that reads: the file that it writes, and how large that is when all went well. The
  // file tells how the job ended; the library's report may have been cleared.
  const LibraryPlatform::ScratchFile* file = nullptr;
  std::uint64_t file_size = 0;
};

// What a job ended with.
struct JobEnd {
  enum class Outcome {
    kDone,
    kFailed,
    kUnknown  // it has ended, and its last report was cleared before it was seen
  };
  Outcome outcome = Outcome::kDone;
  std::uint32_t status = 0;  // a failure's code, or a register list's positive result
};

// Runs the job on the selected camera and follows it to its end. Throws Failure: kTimeout when
// there is no progress or an abandoned job may still be running, kDevice when the camera is gone,
// kStopped, kFile when it can't be started, or kInternal when the system has no thread for it.
// A job that may still be running then counts as abandoned (see CameraLibrary::CheckIdle). A stop
// waits for the end of a job that reads, up to a second.
JobEnd RunJob(CameraLibrary& library, const CameraIdentity& camera, const Job& job);

}  // namespace borvanusb
