#include "station/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace borvanusb {

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double Percentile(std::vector<double> values, double percent) {
  std::sort(values.begin(), values.end());
  const double rank = std::ceil(static_cast<double>(values.size()) * percent / 100);
  return values[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

}  // namespace borvanusb
