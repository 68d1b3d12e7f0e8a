#pragma once

// Jobs of the library with a time limit. Programs use them through the Camera.

#include <borvan_usb.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "borvan_error.hpp"
#include "borvan_files.hpp"

namespace borvan {

using Milliseconds = std::chrono::milliseconds;
// Receives percentages that rise. It runs on the caller's thread. An exception that it throws
// leaves the call; the job continues, as after a time limit.
using Progress = std::function<void(int percent)>;

// The time limit of a call that names none.
inline constexpr Milliseconds kUsualTimeLimit = std::chrono::minutes(10);

namespace detail {

// A job that was started and may still run.
struct PendingJob {
  std::string what;  // for messages
  BorvanJob kind = kBorvanJobOther;
  std::uint64_t before = 0;  // of borvan_before_job
  std::string file;          // that the job writes; empty: none
  std::uint64_t size = 0;    // of that file
  bool reported = false;     // whether something of this job was seen
};

// State that exists once per process, like the library's instance.
struct ProcessState {
  bool has_camera = false;
  std::optional<PendingJob> pending;
};

inline ProcessState& State() {
  static ProcessState state;
  return state;
}

// Calls the function that starts a job. Returns 1 if it was started, 0 if not, and -1 if the call
// raised an exception: no thread could be created, or memory ran out.
#ifdef _MSC_VER
template <typename Start>
int StartGuarded(const Start& start) {
  const unsigned long microsoft_code = 0xE06D7363UL;
  __try {
    return start() ? 1 : 0;
  } __except (_exception_code() == kBorvanExceptionCode || _exception_code() == microsoft_code) {
    return -1;
  }
}
#else
template <typename Start>
int StartGuarded(const Start& start) {
  try {
    return start() ? 1 : 0;
  } catch (...) {
    return -1;
  }
}
#endif

inline Error StatusError(const std::string& what, std::uint32_t status) {
  ErrorKind kind = ErrorKind::kStatus;
  if (status == kBorvanWaitTimeLimit) {
    kind = ErrorKind::kTimeLimit;
  } else if (status == kBorvanWaitEndMissed) {
    kind = ErrorKind::kEndMissed;
  }
  return Error(kind, what + ": " + borvan_status_text(status), status);
}

inline bool IsPendingFileComplete(const PendingJob& job) {
  return !job.file.empty() && IsFileComplete(job.file, job.size);
}

// After a job's 100: waits until its file is whole and closed. A job that can't write it reports a
// failure after the 100.
inline std::uint32_t WaitForFile(const PendingJob& job, std::chrono::steady_clock::time_point end) {
  while (!IsFileComplete(job.file, job.size)) {
    const std::uint64_t progress = GetProgressInfo();
    if (borvan_progress_state(progress) == kBorvanProgressFailed) {
      return static_cast<std::uint32_t>(borvan_progress_status(progress));
    }
    if (std::chrono::steady_clock::now() >= end) {
      return kBorvanWaitTimeLimit;
    }
    Sleep(kBorvanPollMilliseconds);
  }
  return 0;
}

inline std::uint32_t WaitForStatus(PendingJob& job, Milliseconds limit, const Progress& progress) {
  // The job may have ended since the last call, and the report may have been cleared.
  if (job.reported && GetProgressInfo() == 0) {
    return IsPendingFileComplete(job) ? 0 : std::uint32_t{kBorvanWaitEndMissed};
  }
  limit = std::clamp(limit, Milliseconds(0), Milliseconds(0xFFFFFFFF));
  const auto end = std::chrono::steady_clock::now() + limit;
  struct Context {
    PendingJob& job;
    const Progress& progress;
  } context{job, progress};
  const auto pass_on = [](std::int32_t percent, void* pointer) {
    Context& passed = *static_cast<Context*>(pointer);
    passed.job.reported = true;
    if (passed.progress) {
      passed.progress(percent);
    }
  };
  const std::uint32_t status = borvan_wait_for_job(
      job.kind, job.before, static_cast<std::uint32_t>(limit.count()), pass_on, &context);
  if (status == 0 && !job.file.empty()) {
    return WaitForFile(job, end);
  }
  const bool unseen = status == kBorvanWaitTimeLimit || status == kBorvanWaitEndMissed;
  return unseen && IsPendingFileComplete(job) ? 0 : status;
}

// Waits for the pending job. It stays pending if its end was missed.
inline Outcome WaitForPending(Milliseconds limit, const Progress& progress) {
  ProcessState& state = State();
  PendingJob& job = *state.pending;
  const std::string what = job.what;
  const bool is_register_list = job.kind == kBorvanJobRegisterWrite;
  const std::uint32_t status = WaitForStatus(job, limit, progress);
  if (status != kBorvanWaitTimeLimit) {
    state.pending.reset();
  }
  const std::uint32_t nothing_written = 11;
  if (is_register_list && status == nothing_written) {
    return Error(ErrorKind::kNothingWritten,
                 what + ": nothing was written: the list does not begin with 0xfffd", status);
  }
  if (status >= 0x80000000U) {
    return StatusError(what, status);
  }
  return Nothing{};
}

// Starts a job and waits for it.
template <typename Start>
Outcome RunJob(PendingJob job, Milliseconds limit, const Progress& progress, const Start& start) {
  job.before = borvan_before_job();
  const int started = StartGuarded(start);
  if (started < 0) {
    return Error(
        ErrorKind::kStatus,
        job.what + ": the job can't be started: no thread could be created, or memory ran out",
        kBorvanSystemOutOfMemory);
  }
  if (started == 0) {
    return StatusError(job.what, kBorvanFileError);
  }
  State().pending = std::move(job);
  return WaitForPending(limit, progress);
}

}  // namespace detail
}  // namespace borvan
