// The commands on registers by the names of the sample profiles.
#include <gtest/gtest.h>

#include "names/find.h"
#include "names/show.h"
#include "registers/read.h"
#include "registers/write.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

const std::string kSamples = BORVAN_SAMPLES;

class NamesCommandsTest : public testing::Test {
 protected:
  NamesCommandsTest() {
    desk_.host.environment["BORVANUSB_PROFILES"] = kSamples;
    auto& sensor = desk_.Chip().sensors[0x6C];
    sensor[0x3500] = 0x00;
    sensor[0x3501] = 0x12;
    sensor[0x3502] = 0x34;
    sensor[0x3503] = 0x05;
  }

  CommandDesk desk_;
};

TEST_F(NamesCommandsTest, ReadsRegistersWithTheirFields) {
  desk_.Chip().registers[0x1A3] = 0x20;
  EXPECT_EQ(desk_.Do(RegReadCommand{{}, false, {"0x1a3", "EXPOSURE", "SENSOR.CTRL"}}, "reg-read"),
            ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "                 0x01a3       0x20\n"
            "SENSOR.EXPOSURE  0x6c:0x3500  0x001234\n"
            "SENSOR.CTRL      0x6c:0x3503  0x05\n"
            "  MODE [1:0]  1  hdr\n"
            "  GAIN [5:2]  1\n"
            "  MIRROR [6]  0\n"
            "  FLIP [7]  0\n");
  EXPECT_EQ(desk_.result["registers"][1]["value"], 0x1234);
  EXPECT_EQ(desk_.result["registers"][2]["fields"][0]["meaning"], "hdr");
}

TEST_F(NamesCommandsTest, APatternDoesNotReadWhatReadingChanges) {
  desk_.Do(RegReadCommand{{}, false, {"CHIP.*"}}, "reg-read");
  EXPECT_EQ(desk_.output.out.find("EVENTS"), std::string::npos);
  desk_.Do(RegReadCommand{{}, false, {"CHIP.EVENTS"}}, "reg-read");
  EXPECT_NE(desk_.output.out.find("EVENTS"), std::string::npos);
}

TEST_F(NamesCommandsTest, WritesFieldsByName) {
  RegWriteCommand command;
  command.verify = true;
  command.words = {"SENSOR.CTRL.MODE=bracket", "SENSOR.CTRL.GAIN=12", "0x8000=1"};
  EXPECT_EQ(desk_.Do(command, "reg-write"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "SENSOR.CTRL  0x6c:0x3503  0x05 -> 0x32  verified\n"
            "  MODE  1 -> 2  bracket\n"
            "  GAIN  1 -> 12\n"
            "0x8000  0x01  verified\n");
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3503], 0x32U);
}

TEST_F(NamesCommandsTest, LatchesAroundTheExposure) {
  RegWriteCommand command;
  command.words = {"EXPOSURE", "0x8000"};
  desk_.Do(command, "reg-write");
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3501], 0x80U);
  EXPECT_EQ(desk_.Chip().sensors[0x6C][0x3208], 0xA0U);
}

TEST_F(NamesCommandsTest, NothingIsWrittenWhenOneSettingIsWrong) {
  RegWriteCommand command;
  command.words = {"0x8000=1", "SENSOR.CTRL.GAIN=13"};
  EXPECT_EQ(desk_.FailureOf(command).Message(),
            "SENSOR.CTRL.GAIN: 13 is outside of what may be written");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(NamesCommandsTest, CameraWithoutProfile) {
  desk_.host.environment.clear();
  EXPECT_EQ(desk_.FailureOf(RegReadCommand{{}, false, {"EXPOSURE"}}).Message(),
            "EXPOSURE: is no number, and camera Fake camera has no profile that could name it");
}

TEST_F(NamesCommandsTest, ProfileOfAnotherCamera) {
  desk_.common.profile = kSamples + "/virtual-4m.camera.json";
  const Failure failure = desk_.FailureOf(RegReadCommand{{}, false, {"EXPOSURE"}});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_NE(failure.Message().find("is for vid 1234, pid 0002, and the camera is 1234:0001"),
            std::string::npos);
  desk_.common.force_profile = true;
  desk_.Chip().sensors[0x20][0x202] = 7;
  desk_.Do(RegReadCommand{{}, false, {"EXPOSURE"}}, "reg-read");
  EXPECT_EQ(desk_.output.out, "SENSOR.EXPOSURE  0x20:0x0202  0x0007\n");
}

TEST_F(NamesCommandsTest, FindsByNameNumberAndDocumentation) {
  desk_.Do(RegFindCommand{{"exposure"}}, "reg-find");
  EXPECT_NE(desk_.output.out.find("SENSOR.EXPOSURE  0x6c:0x3500  24 bits  read-write  Exposure in"),
            std::string::npos);
  EXPECT_NE(desk_.output.out.find("SENSOR.CTRL"), std::string::npos);  // MODE: exposures of a frame
  desk_.Do(RegFindCommand{{"0x8000"}}, "reg-find");
  EXPECT_TRUE(desk_.output.out.starts_with("CHIP.LED  0x8000")) << desk_.output.out;
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(NamesCommandsTest, ShowsDocumentationAndValue) {
  desk_.Do(RegShowCommand{"SENSOR.CTRL.MODE"}, "reg-show");
  EXPECT_EQ(desk_.output.out,
            "SENSOR.CTRL\n"
            "  How a frame is taken\n"
            "  address  0x3503 (I2C slave 0x6c), 8 bits, read-write\n"
            "  reset    0x00\n"
            "  now      0x05\n"
            "  MODE [1:0]  read-write  now 1 (hdr)\n"
            "      Exposures of a frame\n"
            "      0 = single  One exposure\n"
            "      1 = hdr  A long and a short one\n"
            "      2 = bracket  Three, one after the other\n");
  desk_.Chip().transfers = 0;
  desk_.Do(RegShowCommand{"EVENTS"}, "reg-show");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
