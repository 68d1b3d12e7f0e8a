#pragma once

// The parts of the native measuring program. Each prints its rounds as lines "series value", which
// bench/report.py gathers.

#include <functional>
#include <string>

namespace bench {

// Programming and reading with a device that takes its time. `folder` takes the files, as below.
void MeasureWaits(const std::string& folder);

// Text dumps: formatting against xxd, writing against one write of the same text.
void MeasureDumps(const std::string& folder);

// Peak memory of the flash jobs.
void MeasureMemory(const std::string& folder);

// List files against the C library's reading, and planning lists: time an entry.
void MeasureLists(const std::string& folder);

// Processor time of this process, the system's work for it included. Other programs that want the
// processor meanwhile don't count.
double ProcessorMilliseconds();

// The most resident memory, in bytes, that `work` needed beyond what there was before it.
double PeakGrowth(const std::function<void()>& work);

// Prints one round. Values of a series share a unit, which its name ends in.
void Print(const std::string& series, double value);

// Ends the program unless `held`: a figure of something that went wrong is none.
void Require(bool held, const std::string& what);

}  // namespace bench
