// flash program for several cameras: parallel processes, one for each camera.
#include <algorithm>

#include "base/files.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

using Send = std::function<void(bool, const std::string&)>;

// A progress line on a child's standard error.
std::string ProgressLine(const std::string& stage, int percent) {
  return R"({"progress":{"stage":")" + stage + R"(","done":)" + std::to_string(percent) +
         R"(,"total":100,"percent":)" + std::to_string(percent) +
         R"(,"rate":2048.0,"seconds_left":1.5}})";
}

class FlashSeveralTest : public FlashTest {
 protected:
  FlashSeveralTest() {
    SetCameras(3);
    command_.image = WriteFile("image.bin", Pattern(100, 1));
    command_.address = 0x100;
    command_.all = true;
    host.child = [this](const std::vector<std::string>& words, const Send& send) {
      children_.push_back(words);
      send(true, ProgressLine("read", 50));
      send(true, ProgressLine("program", 100));
      send(false, R"({"changed_bytes":8192,"dry_run":false,"verified":true})");
      return 0;
    };
  }

  void SetCameras(int count) {
    host.chips.clear();
    for (int i = 0; i < count; ++i) {
      auto chip = std::make_shared<FakeChip>();
      chip->identity.path = R"(\\?\usb#vid_1234&pid_0001#)" + std::to_string(100 + i);
      host.chips.push_back(chip);
    }
  }

  FlashProgramCommand command_;
  std::vector<std::vector<std::string>> children_;
};

TEST_F(FlashSeveralTest, EachCameraGetsAProcessWithNamesOfItsOwn) {
  command_.report = "out/report.json";
  command_.backup_file = "old";
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  ASSERT_EQ(children_.size(), 3U);
  EXPECT_EQ(children_[1], (std::vector<std::string>{
                              "flash", "program", command_.image, "--address", "0x100", "--backup",
                              AbsoluteName("old-1"), "--report", AbsoluteName("out/report-1.json"),
                              "--camera", R"(\\?\usb#vid_1234&pid_0001#101)", "--json",
                              "--progress", "json", "--timeout", "10.000"}));
}

TEST_F(FlashSeveralTest, OnlyTheFileOfAReadIsNamedAfterTheCamera) {
  FlashReadCommand read;
  read.range = {0, 0xFFF};
  read.file = "{index}-raw";
  read.format = "raw";
  common.cameras = {"1", "2"};
  common.words = {{"flash", "read"}, {"--format=raw"}, {"0+4K", "{index}-raw"}};
  EXPECT_EQ(Run(read).code, ExitCode::kDone);
  ASSERT_EQ(children_.size(), 2U);
  EXPECT_EQ(children_[0].at(2), "--format=raw");
  EXPECT_EQ((std::vector<std::string>(children_[0].end() - 3, children_[0].end())),
            (std::vector<std::string>{"--", "0+4K", "1-raw"}));
}

TEST_F(FlashSeveralTest, VerboseHoldsForEachProcess) {
  common.verbose = true;
  Run(command_);
  ASSERT_EQ(children_.size(), 3U);
  EXPECT_EQ(children_[2].back(), "--verbose");
}

TEST_F(FlashSeveralTest, CamerasThatAreNamedAreTheOnlyOnes) {
  command_.all = false;
  common.cameras = {"2", "0"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  ASSERT_EQ(children_.size(), 2U);
  EXPECT_EQ(children_[0][6], R"(\\?\usb#vid_1234&pid_0001#102)");
  EXPECT_EQ(children_[1][6], R"(\\?\usb#vid_1234&pid_0001#100)");
}

TEST_F(FlashSeveralTest, CameraThatIsNamedTwiceIsRefused) {
  command_.all = false;
  common.cameras = {"1", "#101"};
  EXPECT_EQ(Run(command_).code, ExitCode::kUsage);
  EXPECT_TRUE(children_.empty());
}

TEST_F(FlashSeveralTest, WorstCodeIsTheWholeCommands) {
  host.child = [](const std::vector<std::string>& words, const Send& send) {
    if (words[6].ends_with("101")) {
      send(false,
           R"({"error":{"code":7,"kind":"verify","message":"it differs","hint":"look\nagain"}})");
      return 7;
    }
    send(false, R"({"changed_bytes":0})");
    return 0;
  };
  EXPECT_EQ(Run(command_).code, ExitCode::kVerify);
  EXPECT_NE(output->out.find("0  1234:0001  Fake camera: holds the image already\n"),
            std::string::npos)
      << output->out;
  EXPECT_NE(output->out.find("1  1234:0001  Fake camera: failed, verify\n"), std::string::npos);
  EXPECT_EQ(output->errors, "camera 1: it differs\n  look\n  again\n");
}

TEST_F(FlashSeveralTest, EachCameraIsOneLineOfJson) {
  const Outcome outcome = Run(command_);
  ASSERT_EQ(output->json_lines.size(), 3U);
  EXPECT_EQ(output->json_lines[2],
            R"({"camera":{"index":2,"path":"\\\\?\\usb#vid_1234&pid_0001#102",)"
            R"("name":"Fake camera","vid":"1234","pid":"0001"},"exit_code":0,"kind":"done",)"
            R"("result":{"changed_bytes":8192,"dry_run":false,"verified":true},"error":null})");
  EXPECT_TRUE(outcome.result.is_null());
}

TEST_F(FlashSeveralTest, ChildThatCrashesIsAFailureOfItsCamera) {
  host.child = [](const std::vector<std::string>&, const Send&) { return -1073741819; };
  EXPECT_EQ(Run(command_).code, ExitCode::kInternal);
  EXPECT_NE(output->errors.find("ended without a result"), std::string::npos);
}

TEST_F(FlashSeveralTest, PlainLinesTellEachStageAndNotEachPercent) {
  SetCameras(1);
  host.child = [](const std::vector<std::string>&, const Send& send) {
    for (int percent = 0; percent <= 100; ++percent) {
      send(true, ProgressLine("read", percent));
    }
    send(true, "note: something to know");
    send(false, R"({"changed_bytes":4096})");
    return 0;
  };
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(output->notes,
            "0  1234:0001  Fake camera: read 0 %\n"
            "0  1234:0001  Fake camera: read 25 %\n"
            "0  1234:0001  Fake camera: read 50 %\n"
            "0  1234:0001  Fake camera: read 75 %\n"
            "0  1234:0001  Fake camera: read 100 %\n"
            "0  1234:0001  Fake camera: note: something to know\n"
            "0  1234:0001  Fake camera: done 100 %\n");
}

// A row of the table, padded to column 79 of 80.
std::string TableRow(std::string text) {
  text.resize(79, ' ');
  return text + "\n";
}

TEST_F(FlashSeveralTest, TableIsDrawnOverItselfOnStandardError) {
  SetCameras(2);
  columns = 80;
  host.child = [this](const std::vector<std::string>&, const Send& send) {
    host.clock += std::chrono::seconds(1);
    send(true, ProgressLine("program", 50));
    send(true, "note: something to know");
    return 0;
  };
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  const std::string first =
      TableRow("0  1234:0001  Fake camera   waiting  [                    ]   0 %") +
      TableRow("1  1234:0001  Fake camera   waiting  [                    ]   0 %");
  const std::string second =
      "up 2\n" +
      TableRow("0  1234:0001  Fake camera   program  [==========          ]  50 %  2.0 KiB/s") +
      TableRow("1  1234:0001  Fake camera   waiting  [                    ]   0 %");
  EXPECT_TRUE(output->notes.starts_with(first + second)) << output->notes;
  // Remarks of the children are printed after the table.
  EXPECT_TRUE(
      output->notes.ends_with("0  1234:0001  Fake camera: note: something to know\n"
                              "1  1234:0001  Fake camera: note: something to know\n"))
      << output->notes;
  EXPECT_EQ(output->out,
            "0  1234:0001  Fake camera: done\n"
            "1  1234:0001  Fake camera: done\n");
}

TEST_F(FlashSeveralTest, RowsOfTheTableNeverReachTheLastColumn) {
  SetCameras(1);
  host.chips[0]->identity.name = "\xE5\x89\x8D\xE9\x9D\xA2 camera with a name beyond its column";
  columns = 40;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  // The first two characters of the name take two columns each.
  EXPECT_TRUE(output->notes.starts_with(
      "0  1234:0001  \xE5\x89\x8D\xE9\x9D\xA2 camera w waiting  [ \nup 1\n"))
      << output->notes;
}

TEST_F(FlashSeveralTest, BarsWithoutATerminalAreLines) {
  SetCameras(1);
  common.progress = ProgressMode::kBar;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(output->notes,
            "0  1234:0001  Fake camera: read 50 %\n"
            "0  1234:0001  Fake camera: program 100 %\n"
            "0  1234:0001  Fake camera: done 100 %\n");
}

TEST_F(FlashSeveralTest, SixteenCamerasAreProgrammedAtOnce) {
  SetCameras(16);
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(children_.size(), 16U);
  EXPECT_EQ(output->json_lines.size(), 16U);
}

TEST_F(FlashSeveralTest, WrongImageIsToldOnceAndStartsNoProcess) {
  command_.image = WriteFile("image.bin", Bytes(10, 0xFF));
  EXPECT_EQ(Run(command_).code, ExitCode::kFile);
  EXPECT_TRUE(children_.empty());
}

TEST_F(FlashSeveralTest, CameraWithoutAVendorUnitIsLeftAside) {
  host.before_open = [](const CameraIdentity& camera) {
    if (camera.index == 1) {
      throw NoVendorUnit(ExitCode::kRefused, "no vendor unit");
    }
    if (camera.index == 2) {
      throw Failure(ExitCode::kRefused, "can't be opened");
    }
  };
  common.wait = std::chrono::seconds(60);
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  // The camera that can't be opened also gets a process, which reports the reason.
  EXPECT_EQ(children_.size(), 2U);
  EXPECT_TRUE(output->notes.starts_with(
      "note: 1  1234:0001  Fake camera has no vendor unit and is skipped\n"))
      << output->notes;
}

TEST_F(FlashSeveralTest, CamerasWithoutAVendorUnitAloneAreNoCamera) {
  host.before_open = [](const CameraIdentity&) {
    throw NoVendorUnit(ExitCode::kRefused, "no vendor unit");
  };
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kNoCamera);
  EXPECT_EQ(outcome.message, "no camera with a vendor unit is found; there are 3 without one");
  EXPECT_TRUE(children_.empty());
}

TEST_F(FlashSeveralTest, NoCameraIsAFailure) {
  host.chips.clear();
  EXPECT_EQ(Run(command_).code, ExitCode::kNoCamera);
}

TEST_F(FlashSeveralTest, ProgressAsJsonNamesTheCamera) {
  SetCameras(1);
  common.progress = ProgressMode::kJson;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_TRUE(output->notes.starts_with(
      R"({"progress":{"stage":"read","done":50,"total":100,"percent":50,"rate":2048.0,)"
      R"("seconds_left":1.5},"camera":0})"))
      << output->notes;
}

}  // namespace
}  // namespace borvanusb::tool_test
