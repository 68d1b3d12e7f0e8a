// What a report leaves in the progress pair, and how the pair is packed.

#include <gtest/gtest.h>

#include <limits>

#include "jobs/progress.h"
#include "jobs/scripted_device.h"

namespace borvan_test {
namespace {

class ReportProgressTest : public testing::Test {
 protected:
  void Report(std::uint32_t status, std::int32_t percent) {
    borvan::ReportProgress(device, static_cast<std::int32_t>(status), percent);
  }

  // What a poller sees: the status in the high 32 bits, the percentage in the low ones.
  std::uint64_t Seen() const { return borvan::ReadProgress(device->Jobs()); }

  // A clear task holds the device object until it ends.
  bool ClearTaskRuns() const { return device.use_count() > 1; }

  const std::shared_ptr<borvan::BorvanUSBBase> device = std::make_shared<ScriptedDevice>();
};

TEST_F(ReportProgressTest, NothingIsReportedAtFirst) {
  EXPECT_EQ(Seen(), 0U);
}

TEST_F(ReportProgressTest, PercentagesBelowHundredArePublished) {
  for (const std::int32_t percent : {0, 1, 50, 99}) {
    Report(0, percent);
    EXPECT_EQ(Seen(), static_cast<std::uint64_t>(percent));
  }
  EXPECT_FALSE(ClearTaskRuns());
}

TEST_F(ReportProgressTest, PercentagesMayRunBack) {
  Report(0, 80);
  Report(0, 10);
  EXPECT_EQ(Seen(), 10U);
}

TEST_F(ReportProgressTest, HundredIsPublishedAndStartsAClearTask) {
  Report(0, 100);
  EXPECT_EQ(Seen(), 100U);
  EXPECT_TRUE(ClearTaskRuns());
}

TEST_F(ReportProgressTest, EachHundredStartsItsOwnClearTask) {
  Report(0, 100);
  Report(0, 100);
  Report(0, 100);
  EXPECT_EQ(device.use_count(), 1 + 3);
}

TEST_F(ReportProgressTest, FailureIsPublishedWithPercentageZero) {
  Report(0, 42);
  Report(0xE000000A, -1);
  EXPECT_EQ(Seen(), 0xE000000A00000000U);
  EXPECT_FALSE(ClearTaskRuns());
}

TEST_F(ReportProgressTest, EveryStatusButZeroCountsWhateverThePercentage) {
  Report(0x80004003, 100);
  EXPECT_EQ(Seen(), 0x8000400300000000U);
  Report(1, 100);
  EXPECT_EQ(Seen(), 0x0000000100000000U);
  Report(0x7FFFFFFF, 50);
  EXPECT_EQ(Seen(), 0x7FFFFFFF00000000U);
  Report(0xFFFFFFFF, 0);
  EXPECT_EQ(Seen(), 0xFFFFFFFF00000000U);
  EXPECT_FALSE(ClearTaskRuns());
}

TEST_F(ReportProgressTest, ImpossiblePercentagesPublishTheBareStatusOne) {
  for (const std::int32_t percent : {101, 112, 200, std::numeric_limits<std::int32_t>::max(), -1,
                                     std::numeric_limits<std::int32_t>::min()}) {
    Report(0, 5);
    Report(0, percent);
    EXPECT_EQ(Seen(), 0x0000000100000000U) << percent;
  }
  EXPECT_FALSE(ClearTaskRuns());
}

TEST_F(ReportProgressTest, FailureStandsUntilTheNextReport) {
  Report(0xE0000003, -1);
  EXPECT_EQ(Seen(), 0xE000000300000000U);
  Report(0, 7);
  EXPECT_EQ(Seen(), 7U);
  Report(0xE0000003, -1);
  Report(0, 100);
  EXPECT_EQ(Seen(), 100U);
}

TEST_F(ReportProgressTest, PairIsPackedAsTwoUnsignedHalves) {
  device->Jobs().progress_percent = -1;
  device->Jobs().progress_status = 0;
  EXPECT_EQ(Seen(), 0x00000000FFFFFFFFU);
  device->Jobs().progress_percent = 0x12345678;
  device->Jobs().progress_status = static_cast<std::int32_t>(0x9ABCDEF0);
  EXPECT_EQ(Seen(), 0x9ABCDEF012345678U);
}

TEST_F(ReportProgressTest, CallbackForwardsUnchanged) {
  const auto report = borvan::MakeProgressCallback(device);
  report(0, 33);
  EXPECT_EQ(Seen(), 33U);
  report(static_cast<std::int32_t>(0xE0000001), -1);
  EXPECT_EQ(Seen(), 0xE000000100000000U);
  const auto copy = report;
  copy(0, 101);
  EXPECT_EQ(Seen(), 0x0000000100000000U);
}

TEST_F(ReportProgressTest, FlagsAreNoBusinessOfReports) {
  device->Jobs().job_running = true;
  device->Jobs().stop_requested = true;
  Report(0, 100);
  Report(0xE0000001, -1);
  EXPECT_TRUE(device->Jobs().job_running);
  EXPECT_TRUE(device->Jobs().stop_requested);
}

TEST_F(ReportProgressTest, ReportsOfManyThreadsLeaveAWholePair) {
  std::vector<std::thread> threads;
  for (std::int32_t i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int n = 0; n < 200; ++n) {
        Report(i % 2 == 0 ? 0 : 0xE0000001U, i % 2 == 0 ? 10 + i : -1);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::uint64_t seen = Seen();
  EXPECT_TRUE(seen == 10 || seen == 12 || seen == 0xE000000100000000U) << std::hex << seen;
}

}  // namespace
}  // namespace borvan_test
