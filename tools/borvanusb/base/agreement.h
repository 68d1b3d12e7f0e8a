#pragma once

#include <algorithm>
#include <vector>

namespace borvanusb {

// Detects wrong readings by repeating them. The library does not report every failed transfer, and
// the chip may answer a read with the reply to an earlier one. A single reading can therefore be
// wrong without an error. The tool accepts a value if two separate reads return it.

// The maximum number of reads. If no two results agree by then, the value is unconfirmed.
inline constexpr int kMostReadings = 5;

template <typename Value>
struct Agreement {
  Value value;     // the value that two reads returned; if there is none, the last reading
  bool confirmed;  // whether two reads returned the value
  int more = 0;    // number of reads beyond the first two
};

// Calls `read` until two of its results are equal, but at most kMostReadings times. The two equal
// results need not be consecutive.
template <typename Read>
auto ReadUntilTwoAgree(Read read) -> Agreement<decltype(read())> {
  std::vector<decltype(read())> readings;
  for (int i = 0; i < kMostReadings; ++i) {
    auto value = read();
    if (std::find(readings.begin(), readings.end(), value) != readings.end()) {
      return {std::move(value), true, i - 1};
    }
    readings.push_back(std::move(value));
  }
  return {readings.back(), false, kMostReadings - 2};
}

}  // namespace borvanusb
