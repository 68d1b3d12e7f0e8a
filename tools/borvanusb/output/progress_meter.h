#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "output/progress.h"

namespace borvanusb {

// Computes the percentage, the rate and the time left of a bulk operation. The caller passes the
// current time to each call.
class ProgressMeter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  void Begin(std::string_view stage, std::uint64_t total, Time now,
             ProgressUnit unit = ProgressUnit::kBytes);
  void SetStage(std::string_view stage) { stage_ = stage; }
  // Sets the number of units done. A lower number than before is ignored. A number above the total
  // counts as the total.
  void Advance(std::uint64_t done, Time now);
  // Marks the operation as complete. The stage's name is again the one from Begin, because the last
  // of several alternating stages does not describe the whole operation.
  void Finish(Time now);

  const std::string& Stage() const { return stage_; }
  ProgressUnit Unit() const { return unit_; }
  std::uint64_t Total() const { return total_; }
  std::uint64_t DoneUnits() const { return done_; }
  // Returns 0 to 100. Returns 100 only if the operation is complete.
  int Percent() const;
  // Returns the units per second over the last few seconds. Returns nothing if the measured time is
  // too short.
  std::optional<double> Rate() const;
  // Returns the time left in whole seconds, rounded up. It counts down evenly and changes to a new
  // estimate only if that differs considerably. Returns nothing if there is no estimate.
  std::optional<std::uint64_t> SecondsLeft() const;
  std::chrono::duration<double> Elapsed() const { return now_ - begin_; }
  // Returns the units per second since Begin. Returns nothing if no time has passed.
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
  std::optional<Time> end_;  // estimated time of completion
};

}  // namespace borvanusb
