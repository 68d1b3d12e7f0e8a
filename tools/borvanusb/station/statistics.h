#pragma once

#include <vector>

namespace borvanusb {

// Statistics of measured values. The lists must not be empty.

// The middle value; for an even number of values, the mean of the two middle ones.
double Median(std::vector<double> values);

// The smallest value that at least `percent` of the values do not exceed. `percent` is above 0, up
// to 100.
double Percentile(std::vector<double> values, double percent);

}  // namespace borvanusb
