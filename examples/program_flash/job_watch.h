#pragma once

#include <cstdint>

// Follows one job by the values of GetProgressInfo. It expects a progress that is the job's own:
// UsbIniDevice and a select came before the job, so the first value is 0 and nothing but the job
// and the clearing of its own 100 changes it.
class JobWatch {
 public:
  enum class State { kRunning, kDone, kFailed };

  // Takes the next value, polled some 20 ms after the one before, and tells how the job stands.
  // Once done or failed, it stays so.
  State See(std::uint64_t progress);

  // The highest percentage seen, 0 to 100.
  std::int32_t Percent() const { return percent_; }

  // Why the job failed; 0 unless it did.
  std::uint32_t Status() const { return status_; }

 private:
  State state_ = State::kRunning;
  std::int32_t percent_ = 0;
  std::uint32_t status_ = 0;
  bool has_reported_ = false;
  int zeros_in_a_row_ = 0;
};
