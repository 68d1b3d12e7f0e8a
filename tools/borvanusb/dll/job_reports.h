#pragma once

#include <cstdint>

#include <borvan_usb.h>

namespace borvanusb {

// Interprets the value of GetProgressInfo while a job runs.
//
// The library has one progress value for all jobs, so the value may belong to an earlier job.
// Before a job starts, this program therefore sets a mark: it starts a flash write with an empty
// file name, which fails and leaves its status as the mark. After that, the value is one of these:
// - the mark: the job has reported nothing, or it has reported that it can't use its file, which
//   has the same status
// - 0: the value was cleared, because a job reported 100 three seconds ago
// - any other value: the report of this job, because no other job runs
// The library reads the two halves of the value one after the other. A status may therefore come
// with an older or newer percentage, and the percentage counts only if the status is 0.
enum class JobReport { kNothing, kCleared, kRunning, kDone, kFailed, kNotice };

// The status of the mark: the library can't use a file.
inline constexpr std::uint32_t kMarkStatus = 0xE000000A;

inline std::uint32_t ReportedStatus(std::uint64_t progress) {
  return static_cast<std::uint32_t>(borvan_progress_status(progress));
}

inline JobReport ReportIn(std::uint64_t progress) {
  const std::int32_t status = borvan_progress_status(progress);
  const std::int32_t percent = borvan_progress_percent(progress);
  constexpr std::int32_t kWhole = 100;
  if (static_cast<std::uint32_t>(status) == kMarkStatus) {
    return JobReport::kNothing;
  }
  if (status != 0) {
    return status < 0 ? JobReport::kFailed : JobReport::kNotice;
  }
  if (percent <= 0) {
    return JobReport::kCleared;
  }
  return percent < kWhole ? JobReport::kRunning : JobReport::kDone;
}

}  // namespace borvanusb
