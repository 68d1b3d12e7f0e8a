// The header's helper that waits for a job, on a scripted progress: each way in which the bare
// value of GetProgressInfo misleads.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "scripted_progress.h"

namespace {

constexpr std::uint64_t kDone = 100;
constexpr std::uint64_t kPast100 = 0x0000000100000000;           // status 1, 0 %
constexpr std::uint64_t kListNotBegun = 0x0000000B00000000;      // status 11, 0 %
constexpr std::uint64_t kEraseFailed = 0xE000000100000000;       // status 0xE0000001, 0 %
constexpr std::uint64_t kFileError = 0xE000000A00000000;         // status 0xE000000A, 0 %
constexpr std::uint64_t kFailureBeside100 = 0xE000000100000064;  // halves of two reports
constexpr std::uint64_t kFailureBeside60 = 0xE00000010000003C;   // likewise

constexpr std::uint32_t kTimeLimit = 10'000;

class JobWait : public testing::Test {
 protected:
  JobWait() { script_clear(); }

  // Waits for a job in front of which borvan_before_job was called at time 0.
  std::uint32_t Wait(BorvanJob job = kBorvanJobOther, std::uint64_t before = 0) {
    return borvan_wait_for_job(
        job, before, kTimeLimit,
        [](std::int32_t percent, void* context) {
          static_cast<std::vector<std::int32_t>*>(context)->push_back(percent);
        },
        &percents_);
  }

  std::vector<std::int32_t> percents_;
};

TEST_F(JobWait, EndsAtThe100) {
  script_report(100, 1);
  script_report(200, 60);
  script_report(300, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_GE(script_time(), 300U);
  EXPECT_LE(script_time(), 400U);
  EXPECT_EQ((std::vector<std::int32_t>{1, 60, 100}), percents_);
}

TEST_F(JobWait, SleepsBetweenTwoLooks) {
  script_report(2000, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_LE(script_looks(), 210U);
  EXPECT_LE(script_longest_nap(), 100U) << "a 100 lasts only three seconds";
}

// A dump of less than eight bytes reports 100 before it looks how its only transfer went; a job
// that can't write its file fails after its 100.
TEST_F(JobWait, SeesAFailureRightBehindThe100) {
  script_report(100, kDone);
  script_report(105, kEraseFailed);
  EXPECT_EQ(0xE0000001U, Wait());
  EXPECT_TRUE(percents_.empty());
}

TEST_F(JobWait, NeedsNoCallback) {
  script_report(100, 1);
  script_report(200, kDone);
  EXPECT_EQ(0U, borvan_wait_for_job(kBorvanJobOther, 0, kTimeLimit, nullptr, nullptr));
}

TEST_F(JobWait, ReturnsTheFailureOfTheJob) {
  script_report(100, 3);
  script_report(200, kEraseFailed);
  EXPECT_EQ(0xE0000001U, Wait());
  EXPECT_EQ((std::vector<std::int32_t>{3}), percents_);
}

TEST_F(JobWait, ReturnsAFileErrorAtOnceWhenNothingElseStoodThere) {
  script_report(40, kFileError);
  EXPECT_EQ(0xE000000AU, Wait());
  EXPECT_EQ(40U, script_time());
}

// ---- No end in sight ----------------------------------------------------------------------------

TEST_F(JobWait, EndsAtItsTimeLimitWhenNothingIsReported) {
  EXPECT_EQ(0xE0001001U, Wait());
  EXPECT_GE(script_time(), 10'000U);
  EXPECT_LE(script_time(), 10'100U);
}

TEST_F(JobWait, EndsAtItsTimeLimitWhenTheJobStands) {
  script_report(100, 37);
  EXPECT_EQ(0xE0001001U, Wait());
}

TEST_F(JobWait, LooksOnceWhenTheTimeLimitIs0) {
  script_report(0, kDone);
  EXPECT_EQ(0U, borvan_wait_for_job(kBorvanJobOther, 0, 0, nullptr, nullptr));
  script_clear();
  EXPECT_EQ(0xE0001001U, borvan_wait_for_job(kBorvanJobOther, 0, 0, nullptr, nullptr));
  EXPECT_EQ(0U, script_time());
}

TEST_F(JobWait, SeesAnEndThatCameWhileItSleptPastTheTimeLimit) {
  script_report(5'000, kDone);
  script_suspend(kTimeLimit);
  script_report(11'000, kDone);
  EXPECT_EQ(0U, Wait());
}

// ---- What a former job left ---------------------------------------------------------------------

TEST_F(JobWait, TakesAFailureOfAFormerJobForNoneOfThisOne) {
  script_report(0, kEraseFailed);
  const std::uint64_t before = borvan_before_job();
  EXPECT_EQ(0U, script_time()) << "a failure is not waited for";
  script_report(300, 50);
  script_report(400, kDone);
  EXPECT_EQ(0U, Wait(kBorvanJobOther, before));
  EXPECT_EQ((std::vector<std::int32_t>{50, 100}), percents_);
}

TEST_F(JobWait, SeesTheSameFailureASecondTime) {
  script_report(0, kEraseFailed);
  const std::uint64_t before = borvan_before_job();
  script_report(300, kEraseFailed);
  EXPECT_EQ(0xE0000001U, Wait(kBorvanJobOther, before));
  EXPECT_EQ(300U, script_time());
}

TEST_F(JobWait, SeesAFileErrorAfterTheJobsOwnReports) {
  script_report(0, kEraseFailed);
  const std::uint64_t before = borvan_before_job();
  script_report(300, 99);
  script_report(400, kFileError);
  EXPECT_EQ(0xE000000AU, Wait(kBorvanJobOther, before));
}

TEST_F(JobWait, WithAFormerFailureAFileErrorAtOnceIsATimeLimit) {
  script_report(0, kEraseFailed);
  const std::uint64_t before = borvan_before_job();
  script_report(300, kFileError);
  EXPECT_EQ(0xE0001001U, Wait(kBorvanJobOther, before)) << "never a success";
}

TEST_F(JobWait, LetsA100OfAFormerJobPassFirst) {
  script_report(0, kDone);
  script_report(2'900, 0);
  const std::uint64_t before = borvan_before_job();
  EXPECT_EQ(0U, before);
  EXPECT_EQ(0U, script_marks());
  EXPECT_GE(script_time(), 2'910U) << "a short dump reports 100 twice, so it is cleared twice";
  EXPECT_LE(script_time(), 3'000U);
}

TEST_F(JobWait, DoesNotWaitForEverForTheClearingOfA100) {
  script_report(0, kDone);
  const std::uint64_t before = borvan_before_job();
  EXPECT_GE(script_time(), 3'200U);
  EXPECT_LE(script_time(), 4'000U);
  EXPECT_EQ(kFileError, before);
  EXPECT_EQ(0xE0001001U, Wait(kBorvanJobOther, before)) << "that 100 was not this job's";
}

TEST_F(JobWait, StartsAtOnceOnAFreshInstance) {
  EXPECT_EQ(0U, borvan_before_job());
  EXPECT_EQ(0U, script_time());
  EXPECT_EQ(0U, script_marks());
}

TEST_F(JobWait, WaitsOnWhenAFormerJobsClearingWipesAReport) {
  script_report(100, 60);
  script_report(200, 0);
  script_report(5'000, 99);
  script_report(5'100, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_EQ((std::vector<std::int32_t>{60, 99, 100}), percents_);
}

TEST_F(JobWait, ReturnsNoSuccessWhenAClearingWipedTheEnd) {
  script_report(100, 60);
  script_report(200, 0);
  EXPECT_EQ(0xE0001001U, Wait());
}

// ---- A 100 that was cleared while the program slept ---------------------------------------------

TEST_F(JobWait, TellsThatTheEndWasMissed) {
  script_report(100, 60);
  script_report(200, kDone);
  script_report(3'200, 0);
  while (script_time() < 100) {
    Sleep(10);
  }
  script_suspend(4'000);
  EXPECT_EQ(0xE0001002U, Wait());
  EXPECT_LE(script_time(), 4'200U);
}

TEST_F(JobWait, TellsThatTheEndOfAJobWithoutPercentagesWasMissed) {
  script_report(0, kEraseFailed);
  const std::uint64_t before = borvan_before_job();
  script_report(200, kDone);
  script_report(3'200, 0);
  script_suspend(4'000);
  EXPECT_EQ(0xE0001002U, Wait(kBorvanJobRegisterWrite, before));
}

TEST_F(JobWait, TakesASuspensionBeforeTheFirstReportForNoEnd) {
  script_suspend(4'000);
  script_report(6'000, kDone);
  EXPECT_EQ(0U, Wait());
}

// ---- Percentages --------------------------------------------------------------------------------

TEST_F(JobWait, SeesTheEndOfAJobThatReportsNothingElse) {
  script_report(9'000, kDone);
  EXPECT_EQ(0U, Wait(kBorvanJobRegisterWrite));
  EXPECT_EQ((std::vector<std::int32_t>{100}), percents_);
}

TEST_F(JobWait, WaitsOnWhenADumpCountsPast100) {
  script_report(100, 88);
  script_report(200, kPast100);
  script_report(300, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_EQ((std::vector<std::int32_t>{88, 100}), percents_);
}

TEST_F(JobWait, EndsAtItsTimeLimitWhenADumpStandsPast100) {
  script_report(200, kPast100);
  EXPECT_EQ(0xE0001001U, Wait());
}

TEST_F(JobWait, ReturnsThePositiveStatusOfARegisterList) {
  script_report(200, kListNotBegun);
  EXPECT_EQ(11U, Wait(kBorvanJobRegisterWrite));
  script_clear();
  script_report(200, kPast100);
  EXPECT_EQ(1U, Wait(kBorvanJobRegisterWrite));
  EXPECT_TRUE(percents_.empty());
}

TEST_F(JobWait, IgnoresHalvesOfTwoReports) {
  script_report(100, kFailureBeside60);
  script_report(200, kFailureBeside100);
  script_report(300, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_EQ((std::vector<std::int32_t>{100}), percents_);
}

TEST_F(JobWait, ShowsEachPercentageOnceAndNoneThatRunsBack) {
  script_report(100, 60);
  script_report(200, 40);
  script_report(300, 61);
  script_report(400, kDone);
  EXPECT_EQ(0U, Wait());
  EXPECT_EQ((std::vector<std::int32_t>{60, 61, 100}), percents_);
}

// ---- Texts --------------------------------------------------------------------------------------

TEST(JobWaitStatus, HasItsOwnTexts) {
  EXPECT_STREQ("The job did not end within the time limit", borvan_status_message(0xE0001001U));
  EXPECT_STREQ("The job's last report was cleared before it was read",
               borvan_status_message(0xE0001002U));
  EXPECT_EQ(nullptr, borvan_status_message(0xE0001000U));
  EXPECT_EQ(nullptr, borvan_status_message(0xE0001003U));
}

}  // namespace
