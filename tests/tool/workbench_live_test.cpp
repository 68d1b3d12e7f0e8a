// What several pages read live from one camera, and when each reading is due.
#include <gtest/gtest.h>

#include "workbench/live_reads.h"
#include "workbench/repeat_times.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;

TEST(WorkbenchLiveTest, EachPageIsReadAtItsOwnRate) {
  const LiveWishes wishes = {{"a", {{{"reg", "read", "1"}, 20}}},
                             {"b", {{{"reg", "read", "2"}, 5}}}};
  EXPECT_EQ(ReadsFor(wishes), (std::vector<LiveRead>{{{"reg", "read", "1"}, 20, {"a"}},
                                                     {{"reg", "read", "2"}, 5, {"b"}}}));
  EXPECT_TRUE(ReadsFor({}).empty());
  EXPECT_TRUE(ReadsFor({{"a", {}}}).empty());
}

TEST(WorkbenchLiveTest, EqualWishesAreReadOnceAtTheFastestRate) {
  const LiveWishes wishes = {{"a", {{{"reg", "read", "1"}, 5}, {{"reg", "read", "2"}, 1}}},
                             {"b", {{{"reg", "read", "1"}, 20}}},
                             {"c", {{{"reg", "read", "1"}, 2}, {{"reg", "read", "1"}, 3}}}};
  EXPECT_EQ(ReadsFor(wishes), (std::vector<LiveRead>{{{"reg", "read", "1"}, 20, {"a", "b", "c"}},
                                                     {{"reg", "read", "2"}, 1, {"a"}}}));
}

TEST(WorkbenchLiveTest, WishesEndWithTheirPage) {
  const LiveWishes wishes = {{"", {{{"reg", "read", "0"}, 1}}},
                             {"a", {{{"reg", "read", "1"}, 1}}},
                             {"b", {{{"reg", "read", "2"}, 1}}}};
  const LiveWishes open = WishesOfOpen(wishes, {"b", "d"});
  EXPECT_EQ(open.size(), 2U);
  EXPECT_TRUE(open.contains(""));
  EXPECT_TRUE(open.contains("b"));
  EXPECT_TRUE(WishesOfOpen(wishes, {}).empty());
}

TEST(WorkbenchLiveTest, ReadingsAreDueAtTheirRates) {
  const RepeatTimes::TimePoint start;
  RepeatTimes times({10, 2}, start);
  std::vector<std::size_t> order;
  for (int i = 0; i < 12; ++i) {
    const auto next = times.First();
    ASSERT_TRUE(next);
    order.push_back(next->reading);
    times.Done(next->reading, next->due);
  }
  EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}));
}

TEST(WorkbenchLiveTest, FastReadingThatCannotKeepUpLeavesTimeForTheSlowOne) {
  RepeatTimes::TimePoint now;
  RepeatTimes times({100, 1}, now);
  std::size_t slow = 0;
  // Each reading takes 50 ms, for ten seconds.
  for (int i = 0; i < 200; ++i) {
    const auto next = times.First();
    ASSERT_TRUE(next);
    now = std::max(now, next->due) + milliseconds(50);
    slow += next->reading;
    times.Done(next->reading, now);
  }
  EXPECT_GE(slow, 9U);
  EXPECT_LE(slow, 11U);
}

TEST(WorkbenchLiveTest, ReadingIsDelayedOrEnds) {
  const RepeatTimes::TimePoint start;
  RepeatTimes times({10, 10}, start);
  times.Delay(0, start, milliseconds(2000));
  EXPECT_EQ(times.First()->reading, 1U);
  times.End(1);
  EXPECT_EQ(times.First()->reading, 0U);
  EXPECT_EQ(times.First()->due, start + milliseconds(2000));
  times.End(0);
  EXPECT_FALSE(times.First());
}

}  // namespace
}  // namespace borvanusb::tool_test
