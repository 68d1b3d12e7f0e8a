#pragma once

// What the parts of the Windows measuring program share. Rounds are printed as lines "series
// value", which bench/report.py gathers.

#include <cstdint>
#include <string>

namespace bench {

void Print(const std::string& series, double value);

// Throws `what` unless `held`: a figure of something that went wrong is none.
void Require(bool held, const std::string& what);

// How one job of the DLL went, in counts of the time stamp counter.
struct JobTimes {
  std::uint64_t transfers = 0;  // from the first transfer's start to the last one's end
  std::uint64_t whole = 0;      // from the call of the export to the last transfer's end
  std::uint64_t waited = 0;     // what the device's waits took, all together
  std::uint64_t file = 0;       // dumps: from the last transfer's end until the file was closed
};

// Both make a fresh instance, select the camera, run one job of the DLL to its end and see that it
// succeeded with exactly the transfers that `size` bytes need. The device waits `wait_cycles` a
// transfer.
JobTimes RunProgramming(const std::string& image_path, std::uint32_t size,
                        std::uint64_t wait_cycles);
JobTimes RunReading(const std::string& dump_path, std::uint32_t size, std::uint64_t wait_cycles);

}  // namespace bench
