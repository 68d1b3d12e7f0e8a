// Progress as a bar, as lines, as JSON and disabled, with a simulated clock.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "output/make_progress.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ProgressFormsTest : public testing::Test {
 protected:
  std::unique_ptr<Progress> Make(ProgressMode mode, bool terminal = true) {
    return MakeProgress(
        mode, terminal, [this] { return columns; },
        [this](std::string_view text) { texts.emplace_back(text); }, [this] { return now; });
  }
  void Wait(int ms) { now += milliseconds(ms); }
  std::string All() const {
    std::string all;
    for (const std::string& text : texts) {
      all += text;
    }
    return all;
  }
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    std::istringstream stream(All());
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }

 public:
  std::vector<std::string> texts;
  int columns = 60;
  std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
};

TEST_F(ProgressFormsTest, BarIsDrawnAtMostTenTimesASecond) {
  const auto progress = Make(ProgressMode::kBar);
  progress->Begin("read", 10000);
  for (std::uint64_t done = 1; done <= 1000; ++done) {
    Wait(1);
    progress->Advance(done);
    progress->Stage(done % 2 == 0 ? "erase" : "program");
  }
  // At the beginning, and every 100 ms.
  EXPECT_EQ(texts.size(), 11U);
  for (const std::string& text : texts) {
    EXPECT_THAT(text, StartsWith("\r"));
    EXPECT_EQ(text.find('\n'), std::string::npos);
    // A console wraps the line when its last column is written.
    EXPECT_LE(text.size() - 1, 59U);
  }
}

TEST_F(ProgressFormsTest, CompleteBarStaysWithTheTimeItTook) {
  const auto progress = Make(ProgressMode::kBar);
  progress->Begin("verify", 65536);
  Wait(5840);
  progress->Done();
  EXPECT_EQ(Lines().back().substr(Lines().back().rfind('\r')),
            "\rverify   [===========] 100 %  64.0 KiB in 5.8 s  11.0 KiB/s");
  EXPECT_TRUE(All().ends_with("\n"));
}

TEST_F(ProgressFormsTest, BarCoversALongerOneBeforeIt) {
  const auto progress = Make(ProgressMode::kBar);
  columns = 80;
  progress->Begin("verify", 65536);
  const std::size_t length = texts.back().size();
  Wait(200);
  progress->Done();
  EXPECT_EQ(texts[1].size(), length);
}

TEST_F(ProgressFormsTest, BrokenBarStaysWhereItWas) {
  const auto progress = Make(ProgressMode::kBar);
  progress->Begin("program", 200);
  progress->Advance(100);
  progress->Break();
  EXPECT_EQ(All().substr(All().rfind('\r')),
            "\rprogram  [=======>       ]  50 %  100/200 bytes            \n");
  const std::size_t count = texts.size();
  progress->Break();
  progress->Done();
  progress->Advance(150);
  progress->Stage("x");
  EXPECT_EQ(texts.size(), count);
}

TEST_F(ProgressFormsTest, NextBarEndsTheOneBefore) {
  const auto progress = Make(ProgressMode::kBar);
  progress->Begin("read", 200);
  progress->Begin("program", 200);
  const std::string all = All();
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 1);
  EXPECT_THAT(texts.back(), StartsWith("\rprogram "));
}

TEST_F(ProgressFormsTest, HiddenBarLeavesAnEmptyLineAndComesBack) {
  const auto progress = Make(ProgressMode::kBar);
  progress->Begin("read", 200);
  const std::size_t length = texts.back().size() - 1;
  progress->Hide();
  EXPECT_EQ(texts.back(), "\r" + std::string(length, ' ') + "\r");
  progress->Hide();
  EXPECT_EQ(texts.size(), 2U);
  Wait(100);
  progress->Advance(1);
  EXPECT_THAT(texts.back(), StartsWith("\rread "));
}

TEST_F(ProgressFormsTest, TerminalWithoutAWidthHas80Columns) {
  const auto progress = Make(ProgressMode::kBar);
  columns = 0;
  progress->Begin("read", 1000000);
  EXPECT_GE(texts.back().size(), 70U);
  EXPECT_LE(texts.back().size(), 80U);
  columns = 1;
  Wait(100);
  progress->Advance(500000);
  EXPECT_LE(texts.back().size(), 1U + 79U);
}

TEST_F(ProgressFormsTest, LinesTellOfALongJobEveryFiveSeconds) {
  const auto progress = Make(ProgressMode::kLines);
  progress->Begin("program", 1048576);
  for (std::uint64_t done = 1; done <= 12; ++done) {
    Wait(1000);
    progress->Advance(done * 10240);
  }
  progress->Break();
  EXPECT_THAT(Lines(),
              ElementsAre("program: 1.0 MiB", "program: 4 %, 0.0 of 1.0 MiB, 10.0 KiB/s, 1:38 left",
                          "program: 9 %, 0.1 of 1.0 MiB, 10.0 KiB/s, 1:33 left",
                          "program: ended at 11 %, 0.1 of 1.0 MiB, 10.0 KiB/s, 1:31 left"));
}

TEST_F(ProgressFormsTest, LinesTellOfEachQuarter) {
  const auto progress = Make(ProgressMode::kLines);
  progress->Begin("read", 262144);
  for (std::uint64_t done = 1; done <= 8; ++done) {
    Wait(1000);
    progress->Advance(done * 32768);
  }
  progress->Done();
  EXPECT_THAT(Lines(),
              ElementsAre("read: 256.0 KiB", "read: 25 %, 64.0 of 256.0 KiB, 32.0 KiB/s, 0:06 left",
                          "read: 50 %, 128.0 of 256.0 KiB, 32.0 KiB/s, 0:04 left",
                          "read: 75 %, 192.0 of 256.0 KiB, 32.0 KiB/s, 0:02 left",
                          "read: done, 256.0 KiB in 8.0 s, 32.0 KiB/s"));
}

TEST_F(ProgressFormsTest, QuickJobHasALineForItsBeginAndItsEnd) {
  const auto progress = Make(ProgressMode::kLines);
  progress->Begin("read", 14);
  for (std::uint64_t done = 1; done <= 14; ++done) {
    Wait(10);
    progress->Advance(done);
  }
  progress->Done();
  EXPECT_THAT(Lines(), ElementsAre("read: 14 bytes", "read: done, 14 bytes in 0.1 s, 100 bytes/s"));
}

TEST_F(ProgressFormsTest, EachFormTellsTheUnit) {
  const auto lines = Make(ProgressMode::kLines);
  lines->Begin("read", 65536, ProgressUnit::kRegisters);
  for (std::uint64_t done = 1; done <= 5; ++done) {
    Wait(1000);
    lines->Advance(done * 3584);
  }
  lines->Break();
  EXPECT_THAT(Lines(),
              ElementsAre("read: 65536 registers",
                          "read: 27 %, 17920 of 65536 registers, 3584 registers/s, 0:14 left",
                          "read: ended at 27 %, 17920 of 65536 registers, 3584 registers/s, 0:14 "
                          "left"));
  texts.clear();
  Make(ProgressMode::kJson)->Begin("scan", 256, ProgressUnit::kSlaves);
  EXPECT_THAT(All(), StartsWith(R"({"progress":{"stage":"scan","done":0,"total":256,)"
                                R"("unit":"slaves","percent":0,)"));
}

TEST_F(ProgressFormsTest, JsonHasAnObjectALine) {
  const auto progress = Make(ProgressMode::kJson);
  progress->Begin("read", 1000);
  Wait(500);
  progress->Advance(250);
  Wait(50);
  progress->Advance(300);
  Wait(1450);
  progress->Done();
  EXPECT_THAT(
      Lines(),
      ElementsAre(
          R"({"progress":{"stage":"read","done":0,"total":1000,"unit":"bytes","percent":0,"rate":null,)"
          R"("seconds_left":null}})",
          R"({"progress":{"stage":"read","done":250,"total":1000,"unit":"bytes","percent":25,"rate":500,)"
          R"("seconds_left":2}})",
          R"({"progress":{"stage":"read","done":1000,"total":1000,"unit":"bytes","percent":100,)"
          R"("rate":500,"seconds_left":0}})"));
}

TEST_F(ProgressFormsTest, StageIsShownInItsRow) {
  for (const ProgressMode mode : {ProgressMode::kBar, ProgressMode::kLines, ProgressMode::kJson}) {
    texts.clear();
    const auto progress = Make(mode);
    progress->Begin("r\nd\x1B[2J", 10);
    Wait(200);
    progress->Stage("w\nr\x1B[2J");
    EXPECT_EQ(All().find('\x1B'), std::string::npos) << All();
    EXPECT_THAT(All(), HasSubstr("r?d?[2J"));
    EXPECT_EQ(All().find("r\nd"), std::string::npos);
  }
}

TEST_F(ProgressFormsTest, JsonComesAtMostTenTimesASecond) {
  const auto progress = Make(ProgressMode::kJson);
  progress->Begin("read", 10000);
  for (std::uint64_t done = 1; done <= 1000; ++done) {
    Wait(1);
    progress->Advance(done);
  }
  EXPECT_EQ(Lines().size(), 11U);
}

TEST_F(ProgressFormsTest, NoneSaysNothing) {
  const auto progress = Make(ProgressMode::kNone);
  progress->Begin("read", 10);
  progress->Stage("x");
  progress->Advance(5);
  progress->Hide();
  progress->Done();
  progress->Break();
  EXPECT_TRUE(texts.empty());
}

TEST_F(ProgressFormsTest, AutoIsABarOnATerminalElseLines) {
  Make(ProgressMode::kAuto, true)->Begin("read", 10);
  EXPECT_THAT(All(), HasSubstr("\rread     [>"));
  texts.clear();
  Make(ProgressMode::kAuto, false)->Begin("read", 10);
  EXPECT_EQ(All(), "read: 10 bytes\n");
}

}  // namespace
}  // namespace borvanusb::tool_test
