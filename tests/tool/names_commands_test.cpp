// Register commands with the names of the sample profiles.
#include <gtest/gtest.h>

#include "base/files.h"
#include "i2c/diff.h"
#include "names/find.h"
#include "names/show.h"
#include "registers/diff.h"
#include "registers/dump.h"
#include "registers/read.h"
#include "registers/write.h"
#include "samples.h"
#include "station/preset.h"
#include "station/script_commands.h"
#include "station/watch.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

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
  EXPECT_EQ(desk_.result["registers"][1]["hex"], "0x001234");
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
            "SENSOR.CTRL.GAIN: 13 is outside the allowed range");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(NamesCommandsTest, DumpThatCannotBeWrittenIsRefusedBeforeItIsRead) {
  RegDumpCommand dump;
  dump.all_named = true;
  dump.file = "no/such/folder/all.csv";
  const std::uint64_t transfers = desk_.Chip().transfers;
  EXPECT_EQ(desk_.FailureOf(dump).Code(), ExitCode::kFile);
  EXPECT_EQ(desk_.Chip().transfers, transfers);
}

TEST_F(NamesCommandsTest, CameraWithoutProfile) {
  desk_.host.environment.clear();
  EXPECT_EQ(desk_.FailureOf(RegReadCommand{{}, false, {"EXPOSURE"}}).Message(),
            "EXPOSURE: is not a number, and camera Fake camera has no profile that could name it");
  RegDumpCommand dump;
  dump.all_named = true;
  EXPECT_EQ(desk_.FailureOf(dump).Message(), "camera Fake camera has no profile");
  PresetApplyCommand preset;
  preset.name = "night";
  EXPECT_EQ(desk_.FailureOf(preset).Message(), "camera Fake camera has no profile");
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

TEST_F(NamesCommandsTest, DumpsAllThatHasAName) {
  const TestFolder folder;
  const std::string file = folder.Name("all.txt");
  EXPECT_EQ(desk_.Do(RegDumpCommand{{}, file, false, true}, "reg-dump"), ExitCode::kDone);
  const std::string text = folder.Read("all.txt");
  EXPECT_TRUE(
      text.starts_with("# Fake camera 1234:0001, profile virtual module with 1 MiB flash\n"
                       "CHIP.FEATURES=0x00\nCHIP.LED=0x00\nCHIP.FRAMES=0x00000000\n"))
      << text;
  EXPECT_NE(text.find("SENSOR.EXPOSURE=0x001234\n"), std::string::npos);
  EXPECT_EQ(text.find("EVENTS"), std::string::npos);  // cleared by reading
  EXPECT_EQ(text.find("GROUP"), std::string::npos);   // can't be read
  // There is no difference after the dump; then one field changes.
  EXPECT_EQ(desk_.Do(RegDiffCommand{file, "camera"}, "reg-diff"), ExitCode::kDone);
  desk_.Chip().sensors[0x6C][0x3503] = 0x46;
  EXPECT_EQ(desk_.Do(RegDiffCommand{file, "camera"}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out,
            "SENSOR.CTRL  0x6c:0x3503  0x05  0x46\n"
            "  MODE  1 (hdr)  2 (bracket)\n"
            "  MIRROR  0  1\n");
  EXPECT_EQ(desk_.result["differences"][0]["fields"][1]["name"], "MIRROR");
}

TEST_F(NamesCommandsTest, DumpsATable) {
  const TestFolder folder;
  desk_.Do(RegDumpCommand{{}, folder.Name("all.csv"), false, true}, "reg-dump");
  const std::string text = folder.Read("all.csv");
  EXPECT_TRUE(
      text.starts_with("name,field,address,value,meaning\nCHIP.FEATURES,,0x01a3,0x00,\n"
                       "CHIP.FEATURES,FAST_I2C,0x01a3,0,\n"))
      << text;
  EXPECT_NE(text.find("SENSOR.CTRL,MODE,0x6c:0x3503,1,hdr\n"), std::string::npos);
}

TEST_F(NamesCommandsTest, DiffWithResetValuesAndPresets) {
  const TestFolder folder;
  desk_.Do(RegDiffCommand{"reset", "camera", folder.Name("d.csv")}, "reg-diff");
  EXPECT_NE(desk_.output.out.find("SENSOR.ID             0x6c:0x300a  0x5640  0x0000\n"),
            std::string::npos)
      << desk_.output.out;
  EXPECT_TRUE(folder.Read("d.csv").starts_with("name,field,address,left,right\n"));
  EXPECT_EQ(desk_.Do(PresetDiffCommand{"night"}, "preset-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out,
            "SENSOR.EXPOSURE  0x6c:0x3500  0x008000  0x001234\n"
            "SENSOR.CTRL      0x6c:0x3503  0x21  0x05\n"
            "  GAIN  8  1\n");
  desk_.Do(PresetApplyCommand{"night", true}, "preset-apply");
  EXPECT_EQ(desk_.Do(PresetDiffCommand{"night"}, "preset-diff"), ExitCode::kDone);
  EXPECT_EQ(desk_.FailureOf(PresetApplyCommand{"nihgt", false}).Hint(),
            "It has day, night, start.");
}

TEST_F(NamesCommandsTest, DiffOfTwoCameras) {
  auto second = std::make_shared<FakeChip>();
  second->identity = {1, R"(\\?\usb#vid_1234&pid_0001#b)", "Fake camera", "1234", "0001"};
  second->sensors = desk_.Chip().sensors;
  second->sensors[0x6C][0x3502] = 0x35;
  desk_.Chip().identity.index = 0;
  desk_.host.chips.push_back(second);
  EXPECT_EQ(desk_.Do(RegDiffCommand{"camera:0", "camera:1"}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "SENSOR.EXPOSURE  0x6c:0x3500  0x001234  0x001235\n");
}

TEST_F(NamesCommandsTest, ListsMayHaveBlanksAroundTheSign) {
  const TestFolder folder;
  const std::string list =
      folder.Write("s.txt", "SENSOR.EXPOSURE = 0x1235  # yesterday\n SENSOR.CTRL.MODE\t= hdr\n");
  EXPECT_EQ(desk_.Do(RegDiffCommand{list, "camera"}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "SENSOR.EXPOSURE  0x6c:0x3500  0x001235  0x001234\n");
}

TEST_F(NamesCommandsTest, DiffOfAnI2cListIsByName) {
  const TestFolder folder;
  const std::string list = folder.Write("s.txt",
                                        "0xfff8,0x6c,\n0xfffe,0x03,\n0x3500,0x00,\n0x3501,0x12,\n"
                                        "0x3502,0x35,\n0x4000,0x01,\n");
  EXPECT_EQ(desk_.Do(I2cDiffCommand{{}, list, "camera"}, "i2c-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out,
            "SENSOR.EXPOSURE  0x6c:0x3500  0x001235  0x001234\n"
            "                 0x6c:0x4000  0x01  0x00\n");
}

TEST_F(NamesCommandsTest, PresetsAreSaved) {
  const TestFolder folder;
  for (const char* const name : {"virtual-chip.svd", "sensor-16-8.svd", "virtual-1m.camera.json"}) {
    folder.Write(name, ReadWholeText(kSamples + "/" + name));
  }
  desk_.common.profile = folder.Name("virtual-1m.camera.json");
  PresetSaveCommand command;
  command.name = "evening";
  EXPECT_EQ(desk_.FailureOf(command).Code(), ExitCode::kUsage);
  command.words = {"EXPOSURE", "SENSOR.CTRL.MODE", "SENSOR.ID"};
  EXPECT_EQ(desk_.Do(command, "preset-save"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["settings"],
            (nlohmann::ordered_json{"SENSOR.EXPOSURE=0x001234", "SENSOR.CTRL.MODE=hdr"}));
  EXPECT_EQ(desk_.FailureOf(command).Message(), "there is a preset \"evening\" already");
  desk_.Chip().sensors[0x6C][0x3502] = 0;
  command.replace = true;
  command.words = {};
  desk_.Do(command, "preset-save");
  EXPECT_EQ(desk_.result["settings"][0], "SENSOR.EXPOSURE=0x001200");
  EXPECT_EQ(desk_.Do(PresetDiffCommand{"evening"}, "preset-diff"), ExitCode::kDone);
}

TEST_F(NamesCommandsTest, WatchesFieldsByName) {
  WatchCommand command;
  command.words = {"SENSOR.CTRL.MODE", "EXPOSURE"};
  command.count = 2;
  desk_.host.on_sleep = [&] { desk_.Chip().sensors[0x6C][0x3503] = 0x44; };
  borvanusb::Run(command, desk_.context);
  EXPECT_EQ(desk_.output.out,
            "+0.000 s  SENSOR.CTRL.MODE  1  hdr\n"
            "+0.000 s  SENSOR.EXPOSURE  0x001234\n"
            "+0.500 s  SENSOR.CTRL.MODE  1 -> 0  single\n");
  for (const std::string& line : desk_.output.json_lines) {
    EXPECT_EQ(BreachOfSchema("watch", nlohmann::ordered_json::parse(line)), "") << line;
  }
}

TEST_F(NamesCommandsTest, ScriptsExpectFieldsByName) {
  ExpectCommand command;
  command.condition = {"SENSOR.CTRL.MODE", {}, Comparison::kEqual, "hdr"};
  EXPECT_EQ(borvanusb::Run(command, desk_.context), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "SENSOR.CTRL.MODE holds 1 (hdr)\n");
  command.condition = {"EXPOSURE", {}, Comparison::kAtLeast, "0x8000"};
  EXPECT_EQ(borvanusb::Run(command, desk_.context), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: expect: SENSOR.EXPOSURE holds 0x001234; expected >= 0x008000\n");
  command.condition = {"SENSOR.CTRL.MODE", {}, Comparison::kEqual, "fast"};
  EXPECT_EQ(desk_.FailureOf(command).Code(), ExitCode::kUsage);
}

}  // namespace
}  // namespace borvanusb::tool_test
