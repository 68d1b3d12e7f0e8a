#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "camera.h"
#include "library/camera_library.h"

// A background job of the library, from start to end, in an instance that no other job has used.
struct Job {
  const char* doing = "";  // "reading flash"
  // Calls the export; false when it could not be started.
  std::function<bool(const Exports&)> start;
  // How long it may report nothing, beside the time limit: pauses in lists, erasing.
  std::chrono::milliseconds silence{0};
  // A positive status is the end (register lists) instead of a percentage past 100 (dumps).
  bool notice_is_end = false;
  // The whole, of which `advance` hears the part that is done.
  std::uint64_t total = 0;
  const Advance* advance = nullptr;
};

// What a job ended with.
struct JobEnd {
  std::uint32_t status = 0;  // 0, a failure's code, or a register list's positive result
  bool failed = false;
};

// Starts the job on the selected camera and follows it to its end. Throws Failure: kTimeout when
// nothing moves, kDevice when the camera is gone, kStopped, or kInternal when the system has no
// thread for it.
JobEnd RunJob(const CameraLibrary& library, const CameraIdentity& camera, const Job& job);
