#pragma once

// The trace: one JSON line for each transfer, and its reader for people.

#include <iosfwd>

namespace virtual_camera {

// Reads trace lines and prints each transfer in words, then a table of transfers by selector and
// purpose. A line that is not one of a trace is named with its number and passed over.
void PrintTrace(std::istream& input, std::ostream& output);

}  // namespace virtual_camera
