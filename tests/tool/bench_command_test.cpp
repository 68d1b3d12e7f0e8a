// bench.
#include "station/bench.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class BenchTest : public testing::Test {
 protected:
  BenchTest() {
    // Each packet, word or register takes 125 us.
    desk_.Chip().before_transfer = [this](std::uint64_t) {
      desk_.host.clock += std::chrono::microseconds(125);
    };
  }

  CommandDesk desk_;
};

TEST_F(BenchTest, MeasuresEachSelectorThatChangesNothing) {
  EXPECT_EQ(desk_.Do(BenchCommand{100, {}}, "bench"), ExitCode::kDone);
  const auto& selectors = desk_.result["selectors"];
  ASSERT_EQ(selectors.size(), 7U);
  // A byte read: 4 transfers of 125 us, made twice.
  EXPECT_EQ(selectors[0]["rounds"], 100);
  EXPECT_EQ(selectors[0]["transfers"], 8);
  EXPECT_NEAR(selectors[0]["median_us"], 125, 1e-6);
  EXPECT_NEAR(selectors[0]["transfers_per_second"], 64000, 1e-3);
  EXPECT_EQ(selectors[3]["measured"], false);
  EXPECT_EQ(selectors[3]["note"], "not measured: it would write");
  EXPECT_EQ(selectors[3]["median_us"], nullptr);
  EXPECT_EQ(selectors[5]["measured"], false);
  // 32 KiB: 512 packets in the fake camera, 2064 transfers with the library.
  EXPECT_EQ(selectors[4]["rounds"], 10);
  EXPECT_EQ(selectors[4]["transfers"], 2064);
  EXPECT_NEAR(selectors[4]["median_us"], 64000, 1e-6);
  EXPECT_EQ(selectors[6]["transfers"], 70);
}

TEST_F(BenchTest, SaysWhatItMeansForProgramming) {
  desk_.Do(BenchCommand{10, {}}, "bench");
  const auto& estimate = desk_.result["estimate"];
  // Writing: 17477 packets of 60 bytes and 256 erases. A packet is read by two transfers, a word by
  // three. Reading: seven parts with 2 length queries and 2049 packets, twice. The last part has
  // 2048 packets and a word, then 2048 packets, then one packet and the word: three
  // jobs. At address 0 the second reading begins with a job for half a packet.
  EXPECT_EQ(estimate["program_transfers"], 17733);
  EXPECT_EQ(estimate["read_transfers"],
            7 * 2 * (2 + 2 * 2049) + 3 * 2 + 2 * (2048 + 2048 + 1) + 2 * 3 + 2);
  EXPECT_EQ(estimate["read_transfers"], 65608);
  const double transfer = 0.064 / 2064;
  EXPECT_NEAR(estimate["seconds_per_transfer"], transfer, 1e-9);
  EXPECT_NEAR(estimate["total_seconds"], transfer * (17733 + 2 * 65608), 1e-6);
  EXPECT_NE(desk_.output.out.find("Programming 1 MiB: about 4.6 s\n"), std::string::npos)
      << desk_.output.out;
  EXPECT_NE(desk_.output.out.find("Assumed: "), std::string::npos);
}

TEST_F(BenchTest, ChangesNothing) {
  desk_.Chip().flash.assign(desk_.Chip().flash.size(), 0x5A);
  desk_.Do(BenchCommand{10, {}}, "bench");
  EXPECT_EQ(desk_.Chip().erases, 0U);
  EXPECT_EQ(desk_.Chip().programmed_packets, 0U);
  EXPECT_EQ(desk_.Chip().flash, std::vector<std::uint8_t>(desk_.Chip().flash.size(), 0x5A));
  EXPECT_TRUE(desk_.Chip().register_lists.empty());
  EXPECT_TRUE(desk_.Chip().i2c_lists.empty());
}

TEST_F(BenchTest, I2cIsMeasuredWhereSomethingAnswers) {
  BenchCommand command{4, {}};
  desk_.Do(command, "bench");
  EXPECT_EQ(desk_.result["selectors"][1]["measured"], false);
  EXPECT_EQ(desk_.result["selectors"][1]["note"], "not measured: requires --slave");
  command.i2c.slave = 0x6C;
  desk_.Do(command, "bench");
  EXPECT_EQ(desk_.result["selectors"][1]["note"], "not measured: nothing answers at that slave");
  desk_.Chip().sensors[0x6C] = {};
  desk_.Do(command, "bench");
  EXPECT_EQ(desk_.result["selectors"][1]["rounds"], 4);
  EXPECT_NEAR(desk_.result["selectors"][1]["median_us"], 125, 1e-6);
}

TEST_F(BenchTest, FailureOfAnyOtherCallEndsIt) {
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number == 5) {
      throw Failure(ExitCode::kDevice, "the transfer failed");
    }
  };
  EXPECT_EQ(desk_.FailureOf(BenchCommand{10, {}}).Code(), ExitCode::kDevice);
}

TEST_F(BenchTest, ClockThatStandsStillDividesByNothing) {
  desk_.Chip().before_transfer = nullptr;
  desk_.Do(BenchCommand{1, {}}, "bench");
  EXPECT_EQ(desk_.result["selectors"][0]["transfers_per_second"], 0.0);
}

}  // namespace
}  // namespace borvanusb::tool_test
