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

// Ends a job that an exception reached: the host must never die of it.
inline void EndFailedJob(BorvanUSBBase& device, const ProgressCallback& progress, Result result) {
  try {
    ReportEnd(progress, result);
  } catch (const std::exception&) {
    // Without a working mutex the report can't be made; the flags can still be cleared.
    static_cast<void>(result);
  }
  ClearJobFlags(device.Jobs());
}

// What a job's thread does; the record is freed behind it.
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

// Starts `worker` on a detached thread that owns `job`. Throws std::system_error when no thread is
// to be had.
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
