#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace borvanusb {

// When each of several readings that are repeated is due, each at its own rate. What can't be
// caught up is skipped, so a fast one does not keep the others waiting.
class RepeatTimes {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::steady_clock::duration;

  // All are due at once, in their order. Rates are readings a second, above 0.
  RepeatTimes(const std::vector<double>& rates, TimePoint now);

  struct Next {
    std::size_t reading = 0;
    TimePoint due;
  };
  // The one that is due first; nothing when all have ended.
  std::optional<Next> First() const;
  // It was read, or tried.
  void Done(std::size_t reading, TimePoint now);
  // It is tried again after this time.
  void Delay(std::size_t reading, TimePoint now, Duration time);
  // It is never read again.
  void End(std::size_t reading);

 private:
  struct Reading {
    Duration interval;
    std::optional<TimePoint> due;  // none: it has ended
  };
  std::vector<Reading> readings_;
};

}  // namespace borvanusb
