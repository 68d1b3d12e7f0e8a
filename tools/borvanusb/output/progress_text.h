#pragma once

#include <cstddef>
#include <string>

#include "output/progress_meter.h"

namespace borvanusb {

// The words and numbers of a progress display, plain ASCII but for stages. Bytes are shown in KiB
// and larger units where there are many; all else is counted one by one.

// "45.2 KiB/s", "120/s" for small totals and for what is counted, whose unit stands beside it;
// empty when there is no rate.
std::string RateText(const ProgressMeter& meter, std::optional<double> rate);
// The same with the unit in any case: "120 registers/s", "100 bytes/s".
std::string LongRateText(const ProgressMeter& meter, std::optional<double> rate);
// "120.0/256.0 KiB", "7/14 registers".
std::string AmountText(const ProgressMeter& meter, const char* between = "/");
// The total alone: "256.0 KiB", "14 registers".
std::string TotalText(const ProgressMeter& meter);
// "0:04", "1:02:03".
std::string TimeLeftText(std::uint64_t seconds);
// "5.8 s", "1:05".
std::string DurationText(std::chrono::duration<double> time);

// A bar with all that fits, never more than `width` characters; its parts keep their places from
// call to call.
std::string BarText(const ProgressMeter& meter, std::size_t width);
// The same for a complete one, with the time it took.
std::string FinishedBarText(const ProgressMeter& meter, std::size_t width);

}  // namespace borvanusb
