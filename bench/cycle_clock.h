#pragma once

// The processor's time stamp counter. A look at it costs some ten nanoseconds on every system,
// where Wine's performance counter costs more than the things measured and counts in steps of 100.

#include <chrono>
#include <cstdint>

#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <x86intrin.h>
#endif

namespace bench {

inline std::uint64_t Cycles() {
  return __rdtsc();
}

// Counts of the time stamp counter in a nanosecond, measured against the steady clock for 50 ms.
inline double CyclesPerNanosecond() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  const std::uint64_t first = Cycles();
  Clock::time_point now = start;
  while (now - start < std::chrono::milliseconds(50)) {
    now = Clock::now();
  }
  const std::uint64_t last = Cycles();
  return static_cast<double>(last - first) /
         static_cast<double>(std::chrono::nanoseconds(now - start).count());
}

}  // namespace bench
