#pragma once

#include <exception>
#include <new>
#include <utility>

#include "files/file.h"
#include "jobs/detached_thread.h"
#include "jobs/job_end.h"
#include "jobs/library_pin.h"
#include "jobs/progress.h"

namespace borvan {

// Ends a job that failed with an exception, which must never terminate the host.
inline void EndFailedJob(BorvanUSBBase& device, const ProgressCallback& progress, Result result) {
  try {
    ReportEnd(progress, result);
  } catch (const std::exception&) {
    // Without a working mutex the report can't be made, but the flags can still be cleared.
    static_cast<void>(result);
  }
  ClearJobFlags(device.Jobs());
}

// The procedure of a job's thread. The record is freed after it.
template <typename Job>
void RunJobThread(Job& job, void (*worker)(Job&)) {
  try {
    worker(job);
  } catch (const FileError&) {
    EndFailedJob(*job.device, job.progress, ToResult(StatusCode::kFileError));
  } catch (const std::bad_alloc&) {
    EndFailedJob(*job.device, job.progress, kOutOfMemory);
  } catch (...) {
    EndFailedJob(*job.device, job.progress, kFailed);
  }
}

// Starts `worker` on a detached thread that owns `job`. Throws std::system_error if no thread can
// be created.
template <typename Job>
Result StartJobThread(Job job, void (*worker)(Job&)) {
  JobState& jobs = job.device->Jobs();
  jobs.stop_requested.exchange(false);
  jobs.job_running.exchange(true);
  PinLibrary();
  RunDetached([job = std::move(job), worker]() mutable { RunJobThread(job, worker); });
  return kOk;
}

}  // namespace borvan
