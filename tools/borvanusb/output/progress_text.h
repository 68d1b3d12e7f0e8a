#pragma once

#include <cstddef>
#include <string>

#include "output/progress_meter.h"

namespace borvanusb {

// The texts of a progress display. All are ASCII except the stage's name. Large numbers of bytes
// are shown in KiB, MiB or GiB. All other units are shown as whole numbers.

// Returns a rate: "45.2 KiB/s". For small totals and for other units than bytes it omits the unit,
// which the amount beside it shows: "120/s". Returns an empty text without a rate.
std::string RateText(const ProgressMeter& meter, std::optional<double> rate);
// The same, always with the unit: "120 registers/s", "100 bytes/s".
std::string LongRateText(const ProgressMeter& meter, std::optional<double> rate);
// Returns the amount done and the total: "120.0/256.0 KiB", "7/14 registers".
std::string AmountText(const ProgressMeter& meter, const char* between = "/");
// Returns the total: "256.0 KiB", "14 registers".
std::string TotalText(const ProgressMeter& meter);
// Returns a time left: "0:04", "1:02:03".
std::string TimeLeftText(std::uint64_t seconds);
// Returns a duration: "5.8 s", "1:05".
std::string DurationText(std::chrono::duration<double> time);

// Returns the line of the bar, with as many texts as fit into `width` columns. The parts keep their
// positions between calls.
std::string BarText(const ProgressMeter& meter, std::size_t width);
// Returns the line of a complete bar, with the time that the operation took.
std::string FinishedBarText(const ProgressMeter& meter, std::size_t width);

}  // namespace borvanusb
