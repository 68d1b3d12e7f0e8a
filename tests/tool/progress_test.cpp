// The values behind every form of progress: percentage, speed, remaining time.
#include "output/progress_meter.h"

#include <gtest/gtest.h>

#include "output/progress_text.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint64_t k4Gibi = 4294967296;

ProgressMeter::Time At(std::int64_t ms) {
  return ProgressMeter::Time(milliseconds(ms));
}

TEST(ProgressMeterTest, NeverRunsBackwardsOrBeyondTheTotal) {
  ProgressMeter meter;
  meter.Begin("read", 200, At(0));
  EXPECT_EQ(meter.Percent(), 0);
  meter.Advance(100, At(10));
  EXPECT_EQ(meter.Percent(), 50);
  meter.Advance(40, At(20));
  EXPECT_EQ(meter.DoneUnits(), 100U);
  meter.Advance(1000, At(30));
  EXPECT_EQ(meter.DoneUnits(), 200U);
  EXPECT_EQ(meter.Percent(), 100);
}

TEST(ProgressMeterTest, HundredPercentIsComplete) {
  ProgressMeter meter;
  meter.Begin("read", k4Gibi, At(0));
  meter.Advance(k4Gibi - 1, At(10));
  EXPECT_EQ(meter.Percent(), 99);
  meter.Advance(k4Gibi, At(20));
  EXPECT_EQ(meter.Percent(), 100);
  meter.Begin("read", UINT64_MAX, At(0));
  meter.Advance(UINT64_MAX - 1, At(10));
  EXPECT_EQ(meter.Percent(), 99);
}

TEST(ProgressMeterTest, NothingToDoIsCompleteWhenItIsDone) {
  ProgressMeter meter;
  meter.Begin("read", 0, At(0));
  EXPECT_EQ(meter.Percent(), 0);
  meter.Advance(5, At(1000));
  EXPECT_EQ(meter.DoneUnits(), 0U);
  EXPECT_EQ(meter.Percent(), 0);
  EXPECT_EQ(meter.SecondsLeft(), std::nullopt);
  meter.Finish(At(2000));
  EXPECT_EQ(meter.Percent(), 100);
  EXPECT_EQ(meter.SecondsLeft(), 0U);
}

TEST(ProgressMeterTest, ClockThatStandsStillGivesNoRate) {
  ProgressMeter meter;
  meter.Begin("read", 100, At(7));
  meter.Advance(50, At(7));
  EXPECT_EQ(meter.Rate(), std::nullopt);
  EXPECT_EQ(meter.SecondsLeft(), std::nullopt);
  meter.Finish(At(7));
  EXPECT_EQ(meter.AverageRate(), std::nullopt);
}

TEST(ProgressMeterTest, ClockThatRunsBackwardsStandsStill) {
  ProgressMeter meter;
  meter.Begin("read", 100, At(5000));
  meter.Advance(10, At(6000));
  meter.Advance(20, At(100));
  EXPECT_EQ(meter.Rate(), 20.0);
}

TEST(ProgressMeterTest, RateIsThatOfTheLastSeconds) {
  ProgressMeter meter;
  meter.Begin("read", 1000000, At(0));
  // 1000 per second for ten seconds, then 100 per second.
  std::uint64_t done = 0;
  for (std::int64_t time = 100; time <= 10000; time += 100) {
    done += 100;
    meter.Advance(done, At(time));
  }
  EXPECT_DOUBLE_EQ(meter.Rate().value_or(0), 1000);
  for (std::int64_t time = 10100; time <= 16000; time += 100) {
    done += 10;
    meter.Advance(done, At(time));
  }
  EXPECT_DOUBLE_EQ(meter.Rate().value_or(0), 100);
  EXPECT_EQ(meter.DoneUnits(), 10600U);
}

TEST(ProgressMeterTest, TimeLeftCountsDownEvenlyAtAnUnevenRate) {
  ProgressMeter meter;
  meter.Begin("program", 100000, At(0));
  std::uint64_t before = UINT64_MAX;
  // 1000 per second on average: every second packet takes three times as long as the others.
  std::uint64_t done = 0;
  for (std::int64_t time = 0; time < 60000; time += 400) {
    meter.Advance(done += 200, At(time + 100));
    meter.Advance(done += 200, At(time + 400));
    if (const auto left = meter.SecondsLeft()) {
      EXPECT_LE(*left, before);
      before = *left;
    }
  }
  EXPECT_GE(before, 38U);
  EXPECT_LE(before, 42U);
}

TEST(ProgressMeterTest, TimeLeftFollowsARateThatFalls) {
  ProgressMeter meter;
  meter.Begin("program", 10000, At(0));
  meter.Advance(1000, At(1000));
  EXPECT_EQ(meter.SecondsLeft(), 9U);
  for (std::int64_t time = 2000; time <= 12000; time += 1000) {
    meter.Advance(1000 + static_cast<std::uint64_t>(time - 1000) / 10, At(time));
  }
  // 7900 remain at 100 per second. The estimate may lag by a tenth.
  EXPECT_GE(meter.SecondsLeft().value_or(0), 71U);
  EXPECT_LE(meter.SecondsLeft().value_or(0), 87U);
}

TEST(ProgressMeterTest, StagesThatTookTurnsEndAsTheOneOfTheBegin) {
  ProgressMeter meter;
  meter.Begin("program", 10, At(0));
  meter.SetStage("erase");
  EXPECT_EQ(meter.Stage(), "erase");
  meter.Finish(At(10));
  EXPECT_EQ(meter.Stage(), "program");
}

TEST(ProgressMeterTest, StandstillHasNoTimeLeft) {
  ProgressMeter meter;
  meter.Begin("program", 10000, At(0));
  meter.Advance(0, At(20000));
  EXPECT_EQ(meter.Rate(), 0.0);
  EXPECT_EQ(meter.SecondsLeft(), std::nullopt);
}

TEST(ProgressTextTest, AmountsAreInTheTotalsUnit) {
  ProgressMeter meter;
  meter.Begin("read", 262144, At(0));
  meter.Advance(123000, At(1000));
  EXPECT_EQ(AmountText(meter), "120.1/256.0 KiB");
  EXPECT_EQ(RateText(meter, meter.Rate()), "120.1 KiB/s");
  meter.Begin("read", k4Gibi, At(0));
  EXPECT_EQ(AmountText(meter), "0.0/4.0 GiB");
  meter.Begin("read", 14, At(0));
  meter.Advance(7, At(1000));
  EXPECT_EQ(AmountText(meter), "7/14 bytes");
  EXPECT_EQ(RateText(meter, meter.Rate()), "7/s");
  EXPECT_EQ(LongRateText(meter, meter.Rate()), "7 bytes/s");
}

TEST(ProgressTextTest, RegistersAreCountedAndNeverMeasuredInKibibytes) {
  ProgressMeter meter;
  meter.Begin("read", 65536, At(0), ProgressUnit::kRegisters);
  EXPECT_EQ(TotalText(meter), "65536 registers");
  meter.Advance(3584, At(1000));
  EXPECT_EQ(AmountText(meter), "3584/65536 registers");
  EXPECT_EQ(AmountText(meter, " of "), "3584 of 65536 registers");
  EXPECT_EQ(RateText(meter, meter.Rate()), "3584/s");
  EXPECT_EQ(LongRateText(meter, meter.Rate()), "3584 registers/s");
  EXPECT_EQ(LongRateText(meter, std::nullopt), "");
  EXPECT_EQ(BarText(meter, 79),
            "read     [>            ]   5 %   3584/65536 registers   0:18 left        3584/s");
  meter.Finish(At(2000));
  EXPECT_EQ(FinishedBarText(meter, 79),
            "read     [===========================] 100 %  65536 registers in 2.0 s  32768/s");
}

TEST(ProgressTextTest, TimesReadLikeAClock) {
  EXPECT_EQ(TimeLeftText(0), "0:00");
  EXPECT_EQ(TimeLeftText(65), "1:05");
  EXPECT_EQ(TimeLeftText(3723), "1:02:03");
  EXPECT_EQ(DurationText(milliseconds(5840)), "5.8 s");
  EXPECT_EQ(DurationText(milliseconds(59960)), "1:00");
  EXPECT_EQ(DurationText(seconds(125)), "2:05");
}

TEST(ProgressTextTest, BarShowsAllThatFits) {
  ProgressMeter meter;
  meter.Begin("program", 262144, At(0));
  meter.Advance(131072, At(2000));
  EXPECT_EQ(BarText(meter, 79),
            "program  [=========>         ]  50 %  128.0/256.0 KiB   0:02 left    64.0 KiB/s");
  EXPECT_EQ(BarText(meter, 60), "program  [=======>      ]  50 %  128.0/256.0 KiB   0:02 left");
  const std::string widest = BarText(meter, 200);
  EXPECT_EQ(widest.find(']') - widest.find('['), 41U) << widest;
  EXPECT_EQ(BarText(meter, 30), "program  [======>      ]  50 %");
  EXPECT_EQ(BarText(meter, 20), "program   50 %");
  EXPECT_EQ(BarText(meter, 9), "pro  50 %");
  EXPECT_EQ(BarText(meter, 3), "0 %");
}

TEST(ProgressTextTest, BarIsNeverWiderThanItsRoom) {
  ProgressMeter meter;
  meter.Begin("\xE6\x97\xA5\xE6\x9C\xAC a very long stage", k4Gibi, At(0));
  meter.Advance(k4Gibi / 3, At(5000));
  for (std::size_t width = 0; width < 200; ++width) {
    // The stage's two characters of three bytes take two columns each.
    EXPECT_LE(BarText(meter, width).size(), width + 2) << width;
    EXPECT_LE(FinishedBarText(meter, width).size(), width + 2) << width;
  }
}

TEST(ProgressTextTest, BarKeepsItsWidthWhileNumbersGrow) {
  ProgressMeter meter;
  meter.Begin("read", 1048576, At(0));
  const std::size_t end = BarText(meter, 79).find(']');
  for (std::int64_t step = 1; step <= 100; ++step) {
    meter.Advance(static_cast<std::uint64_t>(step) * 10000, At(step * 997));
    EXPECT_EQ(BarText(meter, 79).find(']'), end);
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
