#pragma once

// The trace: one JSON line for each transfer, and its reader for people.

#include <iosfwd>

namespace virtual_camera {

// Reads trace lines and prints each transfer in words, then a table of transfers by selector and
// purpose. Reports a line that does not belong to a trace with its number, and skips it. Returns
// false if the input has lines and none of them belongs to a trace.
bool PrintTrace(std::istream& input, std::ostream& output);

}  // namespace virtual_camera
