#include "jobs/progress.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

#include "jobs/detached_thread.h"

namespace borvan {
namespace {

// The status that hosts see for an impossible percentage. This is not a failure of the library, so
// it is not 0xE0000001.
constexpr std::int32_t kOddPercentage = 1;

constexpr std::chrono::seconds kDoneIsShownFor{3};

// After three seconds, clears whatever was reported last, even by a later job. Hosts that know this
// create a new instance for each job.
void ProgressClearTask(JobState& jobs) {
  std::this_thread::sleep_until(std::chrono::steady_clock::now() + kDoneIsShownFor);
  jobs.progress_percent = 0;
  jobs.progress_status = 0;
}

void StartProgressClearTask(const std::shared_ptr<BorvanUSBBase>& device) {
  try {
    RunDetached([device] { ProgressClearTask(device->Jobs()); });
  } catch (const std::exception&) {
    // If no thread can be created, the 100 stays until the next report. The job continues.
    return;
  }
}

}  // namespace

void ReportProgress(const std::shared_ptr<BorvanUSBBase>& device, std::int32_t status,
                    std::int32_t percent) {
  JobState& jobs = device->Jobs();
  const std::lock_guard lock(jobs.progress_mutex);
  if (status != kOk) {
    jobs.progress_status = status;
    jobs.progress_percent = 0;
  } else if (percent == kDonePercent) {
    jobs.progress_percent = kDonePercent;
    jobs.progress_status = kOk;
    StartProgressClearTask(device);
  } else if (percent >= 0 && percent < kDonePercent) {
    jobs.progress_percent = percent;
    jobs.progress_status = kOk;
  } else {
    jobs.progress_status = kOddPercentage;
    jobs.progress_percent = 0;
  }
}

ProgressCallback MakeProgressCallback(std::shared_ptr<BorvanUSBBase> device) {
  return [device = std::move(device)](std::int32_t status, std::int32_t percent) {
    ReportProgress(device, status, percent);
  };
}

std::uint64_t ReadProgress(const JobState& jobs) {
  const auto percent = static_cast<std::uint32_t>(jobs.progress_percent.load());
  const auto status = static_cast<std::uint32_t>(jobs.progress_status.load());
  return (std::uint64_t{status} << 32U) | percent;
}

void ClearJobFlags(JobState& jobs) {
  jobs.job_running.exchange(false);
  jobs.stop_requested.exchange(false);
}

}  // namespace borvan
