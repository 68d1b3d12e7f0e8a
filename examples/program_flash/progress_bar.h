#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// Shows how far a job is, on the standard error stream: a live bar on a terminal, a plain line at
// each quarter elsewhere.
class ProgressBar {
 public:
  // title: what is going on, such as "programming"
  explicit ProgressBar(std::string title);

  // Leaves the terminal's line whatever happens.
  ~ProgressBar();

  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // percent: 0 to 100
  void Show(std::int32_t percent);

  // Seconds since the bar was made.
  double Seconds() const;

 private:
  void Print(const std::string& bar, std::int32_t percent, double seconds, const char* end) const;

  std::string title_;
  std::chrono::steady_clock::time_point start_;
  bool live_;
  bool line_open_ = false;
  std::int32_t shown_percent_ = -1;
  std::int64_t shown_tenths_ = -1;
};
