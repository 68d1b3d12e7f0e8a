// How the example program_flash follows a job by the values of GetProgressInfo.
#include "job_watch.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using State = JobWatch::State;

constexpr std::uint64_t kZero = 0;
constexpr std::uint64_t kDone = 100;
constexpr std::uint64_t kPast100 = 0x0000000100000000;      // status 1, 0 %
constexpr std::uint64_t kEraseFailed = 0xE000000100000000;  // status 0xE0000001, 0 %
constexpr std::uint64_t kHalvesOfTwo = 0xE000000100000064;  // status 0xE0000001, 100 %

State SeeOften(JobWatch& watch, std::uint64_t progress, int times) {
  State state = State::kRunning;
  for (int i = 0; i < times; ++i) {
    state = watch.See(progress);
  }
  return state;
}

TEST(JobWatch, RunsUntilThe100) {
  JobWatch watch;
  EXPECT_EQ(State::kRunning, watch.See(kZero));
  EXPECT_EQ(State::kRunning, watch.See(1));
  EXPECT_EQ(1, watch.Percent());
  EXPECT_EQ(State::kRunning, watch.See(99));
  EXPECT_EQ(99, watch.Percent());
  EXPECT_EQ(State::kDone, watch.See(kDone));
  EXPECT_EQ(100, watch.Percent());
}

TEST(JobWatch, StaysDoneWhenThe100IsCleared) {
  JobWatch watch;
  watch.See(kDone);
  EXPECT_EQ(State::kDone, SeeOften(watch, kZero, 100));
}

TEST(JobWatch, WaitsForEverWhileNothingWasReported) {
  JobWatch watch;
  EXPECT_EQ(State::kRunning, SeeOften(watch, kZero, 10000));
}

TEST(JobWatch, TakesALastingFallToZeroForAMissed100) {
  JobWatch watch;
  watch.See(97);
  EXPECT_EQ(State::kDone, SeeOften(watch, kZero, 5));
  EXPECT_EQ(100, watch.Percent());
}

TEST(JobWatch, TakesAFallToZeroAfterAnOvershootForAMissed100) {
  JobWatch watch;
  watch.See(kPast100);
  EXPECT_EQ(State::kDone, SeeOften(watch, kZero, 5));
}

TEST(JobWatch, DoesNotTakeAPassingZeroForTheEnd) {
  JobWatch watch;
  watch.See(97);
  EXPECT_EQ(State::kRunning, SeeOften(watch, kZero, 4));
  EXPECT_EQ(State::kRunning, watch.See(98));
  EXPECT_EQ(State::kRunning, SeeOften(watch, kZero, 4));
  EXPECT_EQ(State::kFailed, watch.See(kEraseFailed));
}

TEST(JobWatch, DoesNotTakeAnOvershootForAFailure) {
  JobWatch watch;
  watch.See(88);
  EXPECT_EQ(State::kRunning, SeeOften(watch, kPast100, 1000));
  EXPECT_EQ(88, watch.Percent());
  EXPECT_EQ(State::kDone, watch.See(kDone));
}

TEST(JobWatch, TellsWhyTheJobFailed) {
  JobWatch watch;
  watch.See(3);
  EXPECT_EQ(State::kFailed, watch.See(kEraseFailed));
  EXPECT_EQ(0xE0000001U, watch.Status());
  EXPECT_EQ(State::kFailed, watch.See(kDone)) << "the end is the end";
}

TEST(JobWatch, IgnoresAStatusBesideAPercentageOfAnotherReport) {
  JobWatch watch;
  EXPECT_EQ(State::kRunning, watch.See(kHalvesOfTwo));
  EXPECT_EQ(0U, watch.Status());
  EXPECT_EQ(State::kDone, watch.See(kDone));
}

TEST(JobWatch, NeverShowsAPercentageThatRunsBack) {
  JobWatch watch;
  watch.See(60);
  watch.See(40);
  EXPECT_EQ(60, watch.Percent());
}

}  // namespace
