#pragma once

// The parts of the native measuring program. Each prints its rounds as lines "series value", which
// bench/report.py gathers.

#include <string>

namespace bench {

// Programming and reading with a device that takes its time. `folder` takes the files, as below.
void MeasureWaits(const std::string& folder);

// Text dumps: formatting against xxd, writing against one write of the same text.
void MeasureDumps(const std::string& folder);

// Peak memory of the flash jobs.
void MeasureMemory(const std::string& folder);

// Prints one round. Values of a series share a unit, which its name ends in.
void Print(const std::string& series, double value);

// Ends the program unless `held`: a figure of something that went wrong is none.
void Require(bool held, const std::string& what);

}  // namespace bench
