#pragma once

#include <exception>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "files/file.h"
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

// The thread procedure: runs the worker and frees the record.
template <typename Job>
void RunJobThread(std::unique_ptr<Job> job, void (*worker)(Job&)) {
  try {
    worker(*job);
  } catch (const FileError&) {
    EndFailedJob(*job->device, job->progress, ToResult(StatusCode::kFileError));
  } catch (const std::bad_alloc&) {
    EndFailedJob(*job->device, job->progress, kOutOfMemory);
  } catch (...) {
    EndFailedJob(*job->device, job->progress, kFailed);
  }
}

// Starts `worker` on a detached thread that owns `job`. Throws std::system_error when no thread is
// to be had.
template <typename Job>
Result StartJobThread(Job job, void (*worker)(Job&)) {
  JobState& jobs = job.device->Jobs();
  jobs.stopRequested.exchange(false);
  jobs.jobRunning.exchange(true);
  PinLibrary();
  std::thread(RunJobThread<Job>, std::make_unique<Job>(std::move(job)), worker).detach();
  return kOk;
}

}  // namespace borvan
