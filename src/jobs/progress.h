#pragma once

#include <cstdint>
#include <memory>

#include "base/progress_callback.h"
#include "device/borvan_usb_base.h"

namespace borvan {

// Publishes one report of a job in the device object's progress pair:
// (not 0, any): a failure; (0, 0 to 99): progress; (0, 100): done, which a separate task clears
// after three seconds; (0, anything else): only the status 1.
void ReportProgress(const std::shared_ptr<BorvanUSBBase>& device, std::int32_t status,
                    std::int32_t percent);

// Returns a callback that reports to `device` as long as the callback exists, even if the instance
// of the process is replaced or destroyed meanwhile.
ProgressCallback MakeProgressCallback(std::shared_ptr<BorvanUSBBase> device);

// The pair as one number: the status in the high 32 bits, the percentage in the low ones. The two
// are read one after the other, without a lock.
std::uint64_t ReadProgress(const JobState& jobs);

// Marks the end of a job.
void ClearJobFlags(JobState& jobs);

}  // namespace borvan
