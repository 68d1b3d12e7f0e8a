#pragma once

#include <vector>

namespace borvanusb {

// Of times and other measured values, none of them missing: not for empty lists.

// The value in the middle, of an even number of values the mean of the two there.
double Median(std::vector<double> values);

// The least of the values that at least `percent` (above 0, up to 100) of them do not exceed.
double Percentile(std::vector<double> values, double percent);

}  // namespace borvanusb
