#include "jobs/progress.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

#include "jobs/detached_thread.h"

namespace borvan {
namespace {

// What hosts see for a percentage that can't be: not a failure of ours, hence not 0xE0000001.
constexpr std::int32_t kOddPercentage = 1;

constexpr std::chrono::seconds kDoneIsShownFor{3};

// Wipes whatever stands there after three seconds, a later job's reports included; hosts that know
// this take a fresh instance for each job.
void ProgressClearTask(JobState& jobs) {
  std::this_thread::sleep_until(std::chrono::steady_clock::now() + kDoneIsShownFor);
  jobs.progressPercent = 0;
  jobs.progressStatus = 0;
}

void StartProgressClearTask(const std::shared_ptr<BorvanUSBBase>& device) {
  try {
    RunDetached([device] { ProgressClearTask(device->Jobs()); });
  } catch (const std::exception&) {
    // Without a thread to be had the 100 stays until the next report; the job goes on.
    return;
  }
}

}  // namespace

void ReportProgress(const std::shared_ptr<BorvanUSBBase>& device, std::int32_t status,
                    std::int32_t percent) {
  JobState& jobs = device->Jobs();
  const std::lock_guard lock(jobs.progressMutex);
  if (status != kOk) {
    jobs.progressStatus = status;
    jobs.progressPercent = 0;
  } else if (percent == kDonePercent) {
    jobs.progressPercent = kDonePercent;
    jobs.progressStatus = kOk;
    StartProgressClearTask(device);
  } else if (percent >= 0 && percent < kDonePercent) {
    jobs.progressPercent = percent;
    jobs.progressStatus = kOk;
  } else {
    jobs.progressStatus = kOddPercentage;
    jobs.progressPercent = 0;
  }
}

ProgressCallback MakeProgressCallback(std::shared_ptr<BorvanUSBBase> device) {
  return [device = std::move(device)](std::int32_t status, std::int32_t percent) {
    ReportProgress(device, status, percent);
  };
}

std::uint64_t ReadProgress(const JobState& jobs) {
  const auto percent = static_cast<std::uint32_t>(jobs.progressPercent.load());
  const auto status = static_cast<std::uint32_t>(jobs.progressStatus.load());
  return (std::uint64_t{status} << 32U) | percent;
}

void ClearJobFlags(JobState& jobs) {
  jobs.jobRunning.exchange(false);
  jobs.stopRequested.exchange(false);
}

}  // namespace borvan
