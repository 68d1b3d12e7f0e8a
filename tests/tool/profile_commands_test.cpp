// profile list, show and new.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/files.h"
#include "command/command_rules.h"
#include "profile_commands/check.h"
#include "profile_commands/list.h"
#include "profile_commands/new.h"
#include "profile_commands/show.h"
#include "samples.h"
#include "station/info.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;

std::shared_ptr<FakeChip> ChipOf(std::int32_t index, const std::string& pid,
                                 const std::string& name) {
  auto chip = std::make_shared<FakeChip>();
  chip->identity = {index, R"(\\?\usb#vid_1234&pid_)" + pid + "#" + name, name, "1234", pid};
  return chip;
}

class ProfileCommandsTest : public testing::Test {
 protected:
  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(ProfileCommandsTest, ListTellsProfilesAndTheirCameras) {
  desk_.host.environment["BORVANUSB_PROFILES"] = kSamples;
  desk_.host.chips.push_back(ChipOf(1, "0002", "Second"));
  desk_.host.chips.push_back(ChipOf(2, "0009", "Third"));
  EXPECT_EQ(desk_.Do(ProfileListCommand{}, "profile-list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "virtual-1m.camera.json  virtual module with 1 MiB flash  for vid 1234, pid 0001\n"
            "virtual-4m.camera.json  virtual module with 4 MiB flash  for vid 1234, pid 0002\n"
            "camera 0  1234:0001  Fake camera  uses virtual-1m.camera.json\n"
            "camera 1  1234:0002  Second  uses virtual-4m.camera.json\n"
            "camera 2  1234:0009  Third  no profile\n");
  EXPECT_EQ(desk_.result["cameras"][1]["profile"]["name"], "virtual module with 4 MiB flash");
  EXPECT_EQ(desk_.result["cameras"][2]["profile"], nullptr);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(ProfileCommandsTest, ListTellsWhatIsAmbiguousAndWhatIsBroken) {
  desk_.host.environment["BORVANUSB_PROFILES"] = folder_.Name("");
  const std::string one = R"({"name": "One", "cameras": [{"vid": "1234", "pid": "0001"}]})";
  folder_.Write("a.camera.json", one);
  folder_.Write("b.camera.json", R"({"name": "Two", "cameras": [{"pid": "1", "vid": "1234"}]})");
  folder_.Write("c.camera.json",
                R"({"name": "Three", "cameras": [{"vid": "1234", "name": "F*"}]})");
  folder_.Write("notes.json", one);
  EXPECT_EQ(desk_.Do(ProfileListCommand{}, "profile-list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "a.camera.json  One  for vid 1234, pid 0001\n"
            "b.camera.json  can't be used: 1 error\n"
            "c.camera.json  Three  for vid 1234, name F*\n"
            "camera 0  1234:0001  Fake camera  ambiguous: a.camera.json and c.camera.json fit "
            "equally well\n");
  EXPECT_EQ(desk_.result["cameras"][0]["ambiguous"].size(), 2U);
  EXPECT_EQ(desk_.result["cameras"][0]["profile"], nullptr);
}

TEST_F(ProfileCommandsTest, ListOfAGivenProfile) {
  desk_.host.environment["BORVANUSB_PROFILES"] = kSamples;
  desk_.common.profile = kSamples + "/virtual-4m.camera.json";
  EXPECT_EQ(desk_.Do(ProfileListCommand{}, "profile-list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "virtual-4m.camera.json  virtual module with 4 MiB flash  for vid 1234, pid 0002  "
            "(given)\n"
            "virtual-1m.camera.json  virtual module with 1 MiB flash  for vid 1234, pid 0001\n"
            "camera 0  1234:0001  Fake camera  the profile that is given is for other cameras\n");
  desk_.common.force_profile = true;
  desk_.Do(ProfileListCommand{}, "profile-list");
  EXPECT_THAT(desk_.output.out, HasSubstr("Fake camera  uses virtual-4m.camera.json\n"));
}

TEST_F(ProfileCommandsTest, ListWithoutProfilesOrCameras) {
  desk_.host.environment["BORVANUSB_PROFILES"] = folder_.Name("nothing");
  desk_.host.list_failure = Failure(ExitCode::kNoCamera, "no list");
  EXPECT_EQ(desk_.Do(ProfileListCommand{}, "profile-list"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "");
  EXPECT_EQ(desk_.output.notes, "no profile (*.camera.json) in " + folder_.Name("nothing") +
                                    "\nnote: the cameras can't be listed: no list\n");
  EXPECT_EQ(desk_.result["cameras"], nullptr);
}

TEST_F(ProfileCommandsTest, ShowTellsAllOfTheCamerasProfile) {
  desk_.host.environment["BORVANUSB_PROFILES"] = kSamples;
  EXPECT_EQ(desk_.Do(ProfileShowCommand{}, "profile-show"), ExitCode::kDone);
  EXPECT_EQ(
      desk_.output.out,
      "virtual module with 1 MiB flash\n"
      "  The first virtual camera: a chip and a sensor with 8-bit registers.\n"
      "  file     " +
          AbsoluteName(kSamples + "/virtual-1m.camera.json") +
          "\n"
          "  cameras  vid 1234, pid 0001\n"
          "register maps\n"
          "  virtual-chip.svd  chip, 4 registers\n"
          "  sensor-16-8.svd   I2C slave 0x6c, mode 16/8, 13 registers\n"
          "flash, 1048576 bytes (1 MiB)\n"
          "  boot      0x0-0x1ffff, 131072 bytes (128 KiB), read-only; The boot loader; without it "
          "the camera does not start.\n"
          "  firmware  0x40000-0x7ffff, 262144 bytes (256 KiB), for images without a place; The "
          "program of the chip.\n"
          "  config    0xff000-0xfffff, 4096 bytes (4 KiB); Serial number and calibration of the "
          "module.\n"
          "presets\n"
          "  day    4 settings; Short exposure, no gain\n"
          "  night  4 settings; Long exposure, two of them a frame\n"
          "  start  list sensor-16-8.txt; The list that the sensor needs after it got power\n"
          "defaults of options\n"
          "  --slave  0x6c\n"
          "  --mode   16/8\n");
  EXPECT_EQ(desk_.result["maps"][1]["device"].dump(),
            R"({"kind":"i2c","slave":108,"mode":"16/8","option":0})");
  EXPECT_EQ(desk_.result["flash"]["regions"][0]["read_only"], true);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(ProfileCommandsTest, ShowOfAFileNeedsNoCamera) {
  desk_.host.chips.clear();
  EXPECT_EQ(desk_.Do(ProfileShowCommand{kSamples + "/virtual-4m.camera.json"}, "profile-show"),
            ExitCode::kDone);
  EXPECT_THAT(desk_.output.out, HasSubstr("I2C slave 0x20, mode 16/16"));
  desk_.common.profile = kSamples + "/virtual-1m.camera.json";
  EXPECT_EQ(desk_.Do(ProfileShowCommand{}, "profile-show"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["name"], "virtual module with 1 MiB flash");
}

TEST_F(ProfileCommandsTest, ShowOfACameraWithoutProfile) {
  const Failure failure = desk_.FailureOf(ProfileShowCommand{});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "camera Fake camera has no profile");
}

TEST_F(ProfileCommandsTest, NewAsksTheCamera) {
  desk_.Chip().registers[0x1A3] = 0x20;
  desk_.Chip().flash.assign(1U << 20U, 0xFF);
  for (std::size_t i = 0; i < 300000; ++i) {
    desk_.Chip().flash[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13U);
  }
  ProfileNewCommand command;
  command.file = folder_.Name("module.camera.json");
  EXPECT_EQ(desk_.Do(command, "profile-new"), ExitCode::kDone);
  const auto profile = nlohmann::json::parse(folder_.Read("module.camera.json"));
  EXPECT_EQ(profile["name"], "Fake camera");
  EXPECT_EQ(profile["cameras"].dump(), R"([{"pid":"0001","vid":"1234"}])");
  EXPECT_EQ(profile["flash"]["size"], "1M");
  EXPECT_EQ(profile["flash"]["regions"][0]["range"], "0x0-0xfffff");
  EXPECT_THAT(profile["description"].get<std::string>(),
              HasSubstr("Feature register 0x1a3: 0x20."));
  EXPECT_EQ(desk_.Do(ProfileCheckCommand{command.file}, "profile-check"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.notes, "");
}

TEST_F(ProfileCommandsTest, NewNeverReplacesAFileByItself) {
  ProfileNewCommand command;
  command.file = folder_.Write("module.camera.json", "mine");
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(failure.Message(), command.file + " exists already");
  EXPECT_EQ(folder_.Read("module.camera.json"), "mine");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
  command.force = true;
  EXPECT_EQ(desk_.Do(command, "profile-new"), ExitCode::kDone);
  EXPECT_THAT(folder_.Read("module.camera.json"), HasSubstr("Fake camera"));
}

TEST_F(ProfileCommandsTest, NewScansForDevices) {
  desk_.Chip().registers[0x1A3] = 0x20;
  desk_.Chip().sensors[0x6C][0] = 0x56;
  ProfileNewCommand command;
  command.file = folder_.Name("module.camera.json");
  command.scan = true;
  command.yes = true;
  command.flash_size = 0x100000;
  EXPECT_EQ(desk_.Do(command, "profile-new"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["devices"].dump(), "[108]");
  EXPECT_EQ(desk_.result["flash_size"], 0x100000);
  const auto profile = nlohmann::json::parse(folder_.Read("module.camera.json"));
  EXPECT_EQ(profile["options"].dump(), R"({"mode":"16/8","slave":"0x6c"})");
  EXPECT_EQ(desk_.Do(ProfileCheckCommand{command.file}, "profile-check"), ExitCode::kDone);
}

TEST_F(ProfileCommandsTest, InfoTellsTheProfileAndItsFlashSize) {
  desk_.host.environment["BORVANUSB_PROFILES"] = kSamples;
  EXPECT_EQ(desk_.Do(InfoCommand{}, "info"), ExitCode::kDone);
  EXPECT_THAT(desk_.output.out, HasSubstr("\nprofile           virtual module with 1 MiB flash, "));
  EXPECT_THAT(desk_.output.out, HasSubstr("\nflash size        1048576 bytes (1 MiB), from the "
                                          "profile\n"));
  EXPECT_EQ(desk_.result["profile"]["name"], "virtual module with 1 MiB flash");
  desk_.host.environment.clear();
  EXPECT_EQ(desk_.Do(InfoCommand{0x20000}, "info"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["profile"], nullptr);
  EXPECT_EQ(desk_.output.out.find("profile"), std::string::npos);
}

TEST_F(ProfileCommandsTest, InfoOfAnAmbiguousCamera) {
  desk_.host.environment["BORVANUSB_PROFILES"] = folder_.Name("");
  folder_.Write("a.camera.json", R"({"name": "One", "cameras": [{"vid": "1234"}]})");
  folder_.Write("b.camera.json", R"({"name": "Two", "cameras": [{"pid": "0001"}]})");
  EXPECT_EQ(desk_.Do(InfoCommand{}, "info"), ExitCode::kDone);
  EXPECT_THAT(desk_.output.out, HasSubstr("\nprofile           ambiguous: "));
  EXPECT_EQ(desk_.result["profile"], nullptr);
}

// The file passes the check for any name of a camera.
TEST_F(ProfileCommandsTest, NewForAnyCamera) {
  ProfileNewCommand command;
  command.file = folder_.Name("x.camera.json");
  command.force = true;
  int number = 0;
  for (const std::string name : {"", "\"quoted\" \\ * ?", "bytes \xFF\xFE", "two\nlines"}) {
    for (const std::string id : {"", "1234"}) {
      desk_.Chip().identity = {0, "p" + std::to_string(++number), name, id, id};
      EXPECT_EQ(borvanusb::Run(command, desk_.context), ExitCode::kDone) << name;
      EXPECT_EQ(desk_.Do(ProfileCheckCommand{command.file}, "profile-check"), ExitCode::kDone)
          << desk_.output.out;
    }
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
