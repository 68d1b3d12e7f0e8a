#include "workbench/repeat_times.h"

#include <algorithm>

namespace borvanusb {

RepeatTimes::RepeatTimes(const std::vector<double>& rates, TimePoint now) {
  for (const double rate : rates) {
    const std::chrono::duration<double> interval(1 / rate);
    readings_.push_back({std::chrono::duration_cast<Duration>(interval), now});
  }
}

std::optional<RepeatTimes::Next> RepeatTimes::First() const {
  std::optional<Next> first;
  for (std::size_t i = 0; i < readings_.size(); ++i) {
    if (const auto& due = readings_[i].due; due && (!first || *due < first->due)) {
      first = {i, *due};
    }
  }
  return first;
}

void RepeatTimes::Done(std::size_t reading, TimePoint now) {
  Reading& done = readings_.at(reading);
  done.due = std::max(*done.due + done.interval, now - done.interval);
}

void RepeatTimes::Delay(std::size_t reading, TimePoint now, Duration time) {
  readings_.at(reading).due = now + time;
}

void RepeatTimes::End(std::size_t reading) {
  readings_.at(reading).due.reset();
}

}  // namespace borvanusb
