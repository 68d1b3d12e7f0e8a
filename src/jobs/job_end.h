#pragma once

#include "base/progress_callback.h"
#include "base/result.h"
#include "device/borvan_usb_base.h"

namespace borvan {

// Makes a job's final report: (0, 100), or (result, -1) if `result` is negative. An empty callback
// reports nothing.
void ReportEnd(const ProgressCallback& progress, Result result);

// Ends a job whose file can't be opened: reports the failure and clears the flags.
void EndJobWithoutFile(BorvanUSBBase& device, const ProgressCallback& progress);

}  // namespace borvan
