#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "output/progress.h"

namespace borvanusb {

// How far a bulk operation is, how fast it goes and how long it will take. Times are the caller's.
class ProgressMeter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  void Begin(std::string_view stage, std::uint64_t total, Time now,
             ProgressUnit unit = ProgressUnit::kBytes);
  void SetStage(std::string_view stage) { stage_ = stage; }
  // What is less than before counts as before, what is more than the total as the total.
  void Advance(std::uint64_t done, Time now);
  // All is done. The stage is again the one of the begin: the last of several that took turns
  // would say too little.
  void Finish(Time now);

  const std::string& Stage() const { return stage_; }
  ProgressUnit Unit() const { return unit_; }
  std::uint64_t Total() const { return total_; }
  std::uint64_t DoneUnits() const { return done_; }
  // 0 to 100, and 100 only when it is complete.
  int Percent() const;
  // Units a second over the last few seconds; nothing until there is something to go by.
  std::optional<double> Rate() const;
  // Whole seconds, rounded up. It counts down evenly: it follows the estimate only when that has
  // changed enough to matter.
  std::optional<std::uint64_t> SecondsLeft() const;
  std::chrono::duration<double> Elapsed() const { return now_ - begin_; }
  // Units a second from the beginning on; nothing when no time has passed.
  std::optional<double> AverageRate() const;

 private:
  struct Sample {
    Time time;
    std::uint64_t done;
  };

  void UpdateEnd();

  std::string first_stage_;
  std::string stage_;
  ProgressUnit unit_ = ProgressUnit::kBytes;
  std::uint64_t total_ = 0;
  std::uint64_t done_ = 0;
  bool finished_ = false;
  Time begin_;
  Time now_;
  std::deque<Sample> samples_;
  std::optional<Time> end_;  // when it will be complete
};

}  // namespace borvanusb
