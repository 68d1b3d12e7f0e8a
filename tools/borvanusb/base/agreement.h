#pragma once

#include <algorithm>
#include <vector>

namespace borvanusb {

// A reading may be wrong without any sign of it: the library does not report every transfer that
// went wrong, and a reply may be that to an earlier question. Two readings by separate accesses
// that agree are believed.

// How often a value is read at most before the tool gives up waiting for two that agree.
inline constexpr int kMostReadings = 5;

template <typename Value>
struct Agreement {
  Value value;     // what two readings gave, else the last reading
  bool confirmed;  // whether two readings gave it
  int more = 0;    // readings beyond two
};

// Calls `read` until two of its results are equal, twice at least and kMostReadings times at most.
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
