#include "jobs/job_end.h"

#include "jobs/progress.h"

namespace borvan {
namespace {

constexpr std::int32_t kDone = 100;

}  // namespace

void ReportEnd(const ProgressCallback& progress, Result result) {
  if (!progress) {
    return;
  }
  if (HasFailed(result)) {
    progress(result, kFailurePercent);
  } else {
    progress(kOk, kDone);
  }
}

void EndJobWithoutFile(BorvanUSBBase& device, const ProgressCallback& progress) {
  ReportEnd(progress, ToResult(StatusCode::kFileError));
  ClearJobFlags(device.Jobs());
}

}  // namespace borvan
