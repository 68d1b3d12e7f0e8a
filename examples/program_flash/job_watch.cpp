#include "job_watch.h"

#include <algorithm>

#include "borvan_usb.h"

namespace {

// A 0 after progress means that the 100 came and was cleared, three seconds later, while nobody
// looked. A single 0 may also be two halves of different reports, so it must last.
constexpr int kZerosThatLast = 5;

}  // namespace

JobWatch::State JobWatch::See(std::uint64_t progress) {
  if (state_ != State::kRunning) {
    return state_;
  }
  const std::int32_t percent = borvan_progress_percent(progress);
  const std::int32_t status = borvan_progress_status(progress);
  const bool zero = progress == 0;
  zeros_in_a_row_ = zero ? zeros_in_a_row_ + 1 : 0;
  switch (borvan_progress_state(progress)) {
    case kBorvanProgressDone:
      state_ = State::kDone;
      break;
    case kBorvanProgressFailed:
      state_ = State::kFailed;
      status_ = static_cast<std::uint32_t>(status);
      break;
    case kBorvanProgressNotice:  // a dump past 100 %, right before its end
      has_reported_ = true;
      break;
    case kBorvanProgressRunning:
      if (has_reported_ && zeros_in_a_row_ >= kZerosThatLast) {
        state_ = State::kDone;
      } else if (status == 0 && percent > 0) {
        has_reported_ = true;
        percent_ = std::clamp(percent, percent_, 99);
      }
      break;
  }
  if (state_ == State::kDone) {
    percent_ = 100;
  }
  return state_;
}
