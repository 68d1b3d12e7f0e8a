#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace borvan {

// What background jobs share with the thread that polls them.
struct JobState {
  // The progress pair. The two halves are published separately: a reader between two stores sees
  // one half of each report.
  std::atomic<std::int32_t> progressPercent{0};
  std::atomic<std::int32_t> progressStatus{0};

  // Serialises reports against each other, never the readers nor the clear tasks.
  std::mutex progressMutex;

  std::atomic<bool> stopRequested{false};
  std::atomic<bool> jobRunning{false};
};

}  // namespace borvan
