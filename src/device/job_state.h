#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace borvan {

// What background jobs share with the thread that polls them.
struct JobState {
  // The progress pair. The two halves are published separately: a reader between two stores sees
  // one half of each report.
  std::atomic<std::int32_t> progress_percent{0};
  std::atomic<std::int32_t> progress_status{0};

  // Serialises reports with each other, but not with readers or clear tasks.
  std::mutex progress_mutex;

  std::atomic<bool> stop_requested{false};
  std::atomic<bool> job_running{false};
};

}  // namespace borvan
