#include "output/progress_meter.h"

#include <algorithm>
#include <cmath>

namespace borvanusb {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Seconds = std::chrono::duration<double>;

constexpr seconds kWindow{5};
constexpr milliseconds kBetweenSamples{100};
// A shorter time is not sufficient to compute a rate.
constexpr milliseconds kLeastSpan{300};
// In seconds: 100 hours. A longer time left is not shown.
constexpr double kLongest = 360000;

}  // namespace

void ProgressMeter::Begin(std::string_view stage, std::uint64_t total, Time now,
                          ProgressUnit unit) {
  first_stage_ = stage;
  stage_ = stage;
  unit_ = unit;
  total_ = total;
  done_ = 0;
  finished_ = false;
  begin_ = now;
  now_ = now;
  samples_ = {{now, 0}};
  end_.reset();
}

void ProgressMeter::Advance(std::uint64_t done, Time now) {
  done_ = std::clamp(done, done_, total_);
  now_ = std::max(now, now_);
  if (now_ - samples_.back().time >= kBetweenSamples) {
    samples_.push_back({now_, done_});
  }
  while (samples_.size() > 2 && now_ - samples_[1].time >= kWindow) {
    samples_.pop_front();
  }
  UpdateEnd();
}

void ProgressMeter::Finish(Time now) {
  Advance(total_, now);
  finished_ = true;
  stage_ = first_stage_;
}

int ProgressMeter::Percent() const {
  if (finished_ || (total_ > 0 && done_ == total_)) {
    return 100;
  }
  if (total_ == 0) {
    return 0;
  }
  const double share = 100 * (static_cast<double>(done_) / static_cast<double>(total_));
  return std::min(static_cast<int>(share), 99);
}

std::optional<double> ProgressMeter::Rate() const {
  const Sample& oldest = samples_.front();
  const auto span = now_ - oldest.time;
  if (span < kLeastSpan) {
    return std::nullopt;
  }
  return static_cast<double>(done_ - oldest.done) / Seconds(span).count();
}

void ProgressMeter::UpdateEnd() {
  const auto rate = Rate();
  const double left = rate && *rate > 0 ? static_cast<double>(total_ - done_) / *rate : kLongest;
  if (left >= kLongest) {
    end_.reset();
    return;
  }
  const Time estimate = now_ + std::chrono::duration_cast<Time::duration>(Seconds(left));
  constexpr double kShareThatMatters = 0.1;
  const Seconds change = end_ ? std::max(estimate - *end_, *end_ - estimate) : Time::duration{};
  if (!end_ || *end_ <= now_ || change.count() > std::max(1.0, left * kShareThatMatters)) {
    end_ = estimate;
  }
}

std::optional<std::uint64_t> ProgressMeter::SecondsLeft() const {
  if (finished_ || (total_ > 0 && done_ == total_)) {
    return 0;
  }
  if (!end_) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(std::ceil(std::max(0.0, Seconds(*end_ - now_).count())));
}

std::optional<double> ProgressMeter::AverageRate() const {
  if (now_ - begin_ < milliseconds(1)) {
    return std::nullopt;
  }
  return static_cast<double>(done_) / Elapsed().count();
}

}  // namespace borvanusb
