#pragma once

#include <cstdint>

#include <borvan_usb.h>

namespace borvanusb {

// What GetProgressInfo shows while a job runs in an instance that has run others.
//
// The library keeps one progress for all jobs. Before a job starts, a mark is put there: the report
// of a job that could not be started for want of a file name. From then on, what shows is
// - the mark: the job has reported nothing, or that it can't use its file, which looks the same;
// - 0: three seconds ago a job reported 100, and whatever stood there has been cleared since;
// - anything else: the job's own report, since no other job runs.
// The two halves are read one after the other, so a status may come with the percentage before or
// behind it. A status is a report of its own, and a percentage counts only without one.
enum class JobReport { kNothing, kCleared, kRunning, kDone, kFailed, kNotice };

// Status of the mark.
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
