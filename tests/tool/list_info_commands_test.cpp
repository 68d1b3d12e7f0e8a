// list and info.
#include "station/info.h"
#include "station/list.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

std::shared_ptr<FakeChip> SecondChip() {
  auto chip = std::make_shared<FakeChip>();
  chip->identity = {1, R"(\\?\usb#vid_1234&pid_0002#b)", "Kamera f\xC3\xBCr Tests", "1234", "0002"};
  return chip;
}

class ListInfoTest : public testing::Test {
 protected:
  CommandDesk desk_;
};

TEST_F(ListInfoTest, ListIsATable) {
  desk_.host.chips.push_back(SecondChip());
  EXPECT_EQ(desk_.Do(ListCommand{}, "list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "0  1234:0001  Fake camera       \\\\?\\usb#vid_1234&pid_0001#a\n"
            "1  1234:0002  Kamera f\xC3\xBCr Tests  \\\\?\\usb#vid_1234&pid_0002#b\n");
  EXPECT_EQ(desk_.result["cameras"][1]["index"], 1);
  EXPECT_EQ(desk_.result["cameras"][1]["vid"], "1234");
}

TEST_F(ListInfoTest, NoCameraIsNoFailureAndPointsToDoctor) {
  desk_.host.chips.clear();
  EXPECT_EQ(desk_.Do(ListCommand{}, "list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "");
  EXPECT_EQ(desk_.output.notes, "no USB camera is found; borvanusb doctor shows why\n");
  EXPECT_EQ(desk_.result.dump(), R"({"cameras":[]})");
}

TEST_F(ListInfoTest, WatchTellsArrivalsAndDeparturesUntilItIsStopped) {
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    ++sleeps;
    if (sleeps == 2) {
      desk_.host.chips.push_back(SecondChip());
    } else if (sleeps == 3) {
      desk_.host.chips.erase(desk_.host.chips.begin());
    } else if (sleeps == 4) {
      desk_.host.stop_requested = true;
    }
  };
  desk_.result = nullptr;
  EXPECT_EQ(borvanusb::Run(ListCommand{true}, desk_.context), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "+ 0  1234:0001  Fake camera  \\\\?\\usb#vid_1234&pid_0001#a\n"
            "+ 1  1234:0002  Kamera f\xC3\xBCr Tests  \\\\?\\usb#vid_1234&pid_0002#b\n"
            "- 0  1234:0001  Fake camera  \\\\?\\usb#vid_1234&pid_0001#a\n");
  ASSERT_EQ(desk_.output.json_lines.size(), 3U);
  for (const std::string& line : desk_.output.json_lines) {
    EXPECT_EQ(BreachOfSchema("list-watch", nlohmann::ordered_json::parse(line)), "") << line;
  }
  EXPECT_EQ(nlohmann::ordered_json::parse(desk_.output.json_lines[2])["event"], "left");
  EXPECT_EQ(desk_.host.clock.time_since_epoch(), std::chrono::seconds(4));
}

TEST_F(ListInfoTest, WatchEndsWhenItsOutputIsLost) {
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    ++sleeps;
    desk_.output.takes_results = false;
    ASSERT_LT(sleeps, 3);
    desk_.host.stop_requested = sleeps == 2;  // ends the test
  };
  EXPECT_EQ(borvanusb::Run(ListCommand{true}, desk_.context), ExitCode::kDone);
  EXPECT_EQ(sleeps, 1);
}

TEST_F(ListInfoTest, InfoTellsWhatTheFeatureRegisterMeans) {
  desk_.Chip().registers[0x1A3] = 0x21;
  EXPECT_EQ(desk_.Do(InfoCommand{1048576}, "info"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "camera            0  1234:0001  Fake camera\n"
            "path              \\\\?\\usb#vid_1234&pid_0001#a\n"
            "vendor unit       answers\n"
            "feature register  0x01a3 = 0x21\n"
            "I2C lists         fast: in packets of up to 56 registers (bit 0x20 is set)\n"
            "flash size        1048576 bytes (1 MiB), given by --flash-size\n");
  EXPECT_EQ(desk_.result["fast_i2c"], true);
  desk_.Chip().registers[0x1A3] = 0x1F;
  desk_.Do(InfoCommand{}, "info");
  EXPECT_EQ(desk_.result["fast_i2c"], false);
}

TEST_F(ListInfoTest, InfoOfACameraThatDoesNotAnswerFailsAfterWhatIsKnown) {
  desk_.host.before_open = [](const CameraIdentity&) {
    throw Failure(ExitCode::kRefused, "the camera has no vendor unit", "Take another.");
  };
  EXPECT_EQ(desk_.FailureOf(InfoCommand{}).Code(), ExitCode::kRefused);
  EXPECT_EQ(desk_.output.out,
            "camera            0  1234:0001  Fake camera\n"
            "path              \\\\?\\usb#vid_1234&pid_0001#a\n");
}

TEST_F(ListInfoTest, InfoSaysWhenTheFlashSizeIsNotKnown) {
  EXPECT_EQ(desk_.Do(InfoCommand{}, "info"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["flash"]["size"], nullptr);
  EXPECT_NE(desk_.output.out.find("set it with --flash-size\n"), std::string::npos);
}

}  // namespace
}  // namespace borvanusb::tool_test
