// Medians and percentiles of measured times.
#include "station/statistics.h"

#include <gtest/gtest.h>

namespace borvanusb::tool_test {
namespace {

TEST(StatisticsTest, MedianStandsInTheMiddle) {
  EXPECT_DOUBLE_EQ(Median({3}), 3);
  EXPECT_DOUBLE_EQ(Median({9, 1, 5}), 5);
  EXPECT_DOUBLE_EQ(Median({9, 1, 5, 2}), 3.5);
}

TEST(StatisticsTest, PercentileIsOneOfTheValues) {
  EXPECT_DOUBLE_EQ(Percentile({7}, 99), 7);
  EXPECT_DOUBLE_EQ(Percentile({4, 3, 2, 1}, 50), 2);
  EXPECT_DOUBLE_EQ(Percentile({4, 3, 2, 1}, 51), 3);
  EXPECT_DOUBLE_EQ(Percentile({4, 3, 2, 1}, 99), 4);
  EXPECT_DOUBLE_EQ(Percentile({4, 3, 2, 1}, 0.1), 1);
}

}  // namespace
}  // namespace borvanusb::tool_test
