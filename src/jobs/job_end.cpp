#include "jobs/job_end.h"

#include "jobs/progress.h"

namespace borvan {
void ReportEnd(const ProgressCallback& progress, Result result) {
  if (!progress) {
    return;
  }
  if (HasFailed(result)) {
    progress(result, kFailurePercent);
  } else {
    progress(kOk, kDonePercent);
  }
}

void EndJobWithoutFile(BorvanUSBBase& device, const ProgressCallback& progress) {
  ReportEnd(progress, ToResult(StatusCode::kFileError));
  ClearJobFlags(device.Jobs());
}

}  // namespace borvan
