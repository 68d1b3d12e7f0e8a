// Options that are not given take their values from the profile of the camera.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "command/command_rules.h"
#include "command/option_defaults.h"
#include "command/tool.h"
#include "i2c/read.h"
#include "i2c/scan.h"
#include "station/watch.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Values = std::vector<std::pair<std::string, std::string>>;

Arguments Parsed(const std::vector<std::string>& words, const Values& values) {
  return std::get<Arguments>(ParseCommandLine(words, [&](const CommonArguments&) {
    return OptionDefaults{values, "m.camera.json", {}};
  }));
}

template <typename C>
C As(const std::vector<std::string>& words, const Values& values) {
  return *ValuesOf<C>(*Parsed(words, values).command);
}

Failure FailureOf(const std::vector<std::string>& words, const OptionDefaults& defaults) {
  try {
    ParseCommandLine(words, [&](const CommonArguments&) { return defaults; });
  } catch (const Failure& failure) {
    return failure;
  }
  return {ExitCode::kDone, "no failure"};
}

const Values kSensor = {{"--mode", "16/16"}, {"--slave", "0x20"}};

TEST(OptionDefaultsTest, FillWhatIsNotGiven) {
  const auto read = As<I2cReadCommand>({"i2c", "read", "1"}, kSensor);
  EXPECT_EQ(read.i2c.slave, 0x20U);
  EXPECT_EQ(read.i2c.mode, 2);
  EXPECT_THAT(Parsed({"i2c", "read", "1"}, kSensor).common.defaulted,
              ElementsAre("--mode", "--slave"));
}

TEST(OptionDefaultsTest, WhatIsGivenCounts) {
  const auto read = As<I2cReadCommand>({"i2c", "read", "1", "--slave=0x6c"}, kSensor);
  EXPECT_EQ(read.i2c.slave, 0x6CU);
  EXPECT_EQ(read.i2c.mode, 2);
}

TEST(OptionDefaultsTest, CommandsWithoutTheOptionAreNotTouched) {
  EXPECT_THAT(Parsed({"reg", "read", "1"}, kSensor).common.defaulted, IsEmpty());
  EXPECT_THAT(Parsed({"list"}, kSensor).common.defaulted, IsEmpty());
}

TEST(OptionDefaultsTest, CommonOptionsHaveDefaultsToo) {
  EXPECT_EQ(Parsed({"info"}, {{"--timeout", "25"}}).common.timeout.count(), 25000);
  EXPECT_EQ(Parsed({"info", "--timeout", "3"}, {{"--timeout", "25"}}).common.timeout.count(), 3000);
  // info does not show progress.
  EXPECT_THAT(Parsed({"info"}, {{"--progress", "lines"}}).common.defaulted, IsEmpty());
}

TEST(OptionDefaultsTest, NoDefaultContradictsWhatIsGiven) {
  const auto watch = As<WatchCommand>({"watch", "--reg", "1"}, kSensor);
  EXPECT_FALSE(watch.i2c.slave.has_value());
  EXPECT_EQ(As<WatchCommand>({"watch", "--i2c", "1"}, kSensor).i2c.slave, 0x20U);
  // Addresses of this mode end at 0xff, below the given register.
  const Values narrow = {{"--mode", "8/8"}, {"--slave", "0x20"}};
  const auto read = As<I2cReadCommand>({"i2c", "read", "0x3500"}, narrow);
  EXPECT_EQ(read.i2c.slave, 0x20U);
  EXPECT_EQ(read.i2c.mode, 1);
}

// --mode alone is rejected there, so it is only valid together with --slave, in any order.
TEST(OptionDefaultsTest, DefaultsThatNeedEachOther) {
  EXPECT_THAT(Parsed({"selftest"}, kSensor).common.defaulted,
              testing::UnorderedElementsAre("--mode", "--slave"));
}

TEST(OptionDefaultsTest, NoDefaultForWhatIsChanged) {
  EXPECT_THAT(Parsed({"flash", "program", "i.bin"}, {{"--address", "0x1000"}}).common.defaulted,
              IsEmpty());
  EXPECT_THAT(Parsed({"reg", "write", "1", "1"}, {{"--mask", "1"}}).common.defaulted, IsEmpty());
  EXPECT_THAT(Parsed({"info"}, {{"--camera", "1"}}).common.cameras, IsEmpty());
}

TEST(OptionDefaultsTest, ABadDefaultIsAnErrorOfTheProfile) {
  const Failure failure =
      FailureOf({"i2c", "read", "1"}, {{{"--slave", "300"}}, "m.camera.json", {}});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(failure.Message(),
            "m.camera.json: options.slave: \"300\" is not allowed: a number from 0 to 255, "
            "decimal or with 0x");
}

TEST(OptionDefaultsTest, AMissingOptionTellsWhyThereIsNoDefault) {
  const Failure failure = FailureOf(
      {"i2c", "read", "1"}, {{}, {}, Failure(ExitCode::kSeveralCameras, "there are 2 cameras")});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_THAT(failure.Hint(),
              HasSubstr("\nNo profile was asked for its default: there are 2 cameras"));
}

TEST(OptionDefaultsTest, TheUsersOwnMistakesAreToldFirst) {
  EXPECT_EQ(FailureOf({"i2c", "read", "1", "--mode", "7/7"}, {kSensor, "m", {}}).Code(),
            ExitCode::kUsage);
  EXPECT_THAT(FailureOf({"i2c", "read", "0x10000"}, {kSensor, "m", {}}).Message(),
              HasSubstr("0x10000 is too big for the addresses of width mode 16/8"));
}

// The tool with the sample profiles, which match the cameras of the fake host.
class ToolDefaultsTest : public testing::Test {
 protected:
  ToolDefaultsTest() {
    host.environment["BORVANUSB_PROFILES"] = BORVAN_SAMPLES;
    host.Chip().sensors[0x6C][0x3500] = 0x12;
  }

  int Run(const std::vector<std::string>& words) {
    out.clear();
    err.clear();
    ToolStreams streams;
    streams.output = [this](std::string_view text) {
      out += text;
      return std::optional<WriteProblem>();
    };
    streams.error = [this](std::string_view text) { err += text; };
    streams.columns = [] { return 79; };
    streams.move_up = [](int) {};
    return RunTool(words, host, streams);
  }

 public:
  FakeHost host;
  TestFolder folder;
  std::string out;
  std::string err;
};

TEST_F(ToolDefaultsTest, ComeFromTheCamerasProfile) {
  EXPECT_EQ(Run({"i2c", "read", "0x3500"}), 0) << err;
  EXPECT_EQ(out, "0x3500  0x12\n");
  EXPECT_EQ(Run({"i2c", "read", "0x3500", "--verbose"}), 0);
  EXPECT_THAT(err, HasSubstr("--slave: from the profile "));
}

TEST_F(ToolDefaultsTest, TwoCamerasAndNoneChosen) {
  auto second = std::make_shared<FakeChip>();
  second->identity = {1, R"(\\?\usb#b)", "Second", "1234", "0002"};
  host.chips.push_back(second);
  EXPECT_EQ(Run({"i2c", "read", "0x3500"}), 1);
  EXPECT_THAT(err, HasSubstr("No profile was asked for its default: there are 2 cameras"));
  EXPECT_EQ(Run({"i2c", "read", "0x3500", "--camera", "0"}), 0);
}

TEST_F(ToolDefaultsTest, LinesOfAScriptHaveThem) {
  const std::string script = folder.Write("s.txt", "i2c read 0x3500\nreg read 0x1a3\n");
  EXPECT_EQ(Run({"run", script}), 0) << err;
  EXPECT_EQ(out, "> i2c read 0x3500\n0x3500  0x12\n> reg read 0x1a3\n0x01a3  0x00\n");
}

TEST_F(ToolDefaultsTest, TheCameraMayComeLater) {
  const auto camera = host.chips.front();
  host.chips.clear();
  host.on_sleep = [&] { host.chips = {camera}; };
  EXPECT_EQ(Run({"i2c", "read", "0x3500", "--wait", "5"}), 0) << err;
  EXPECT_EQ(out, "0x3500  0x12\n");
  EXPECT_THAT(err, HasSubstr("no USB camera is found; waiting for it, 5 s at most\n"));
  host.chips.clear();
  host.on_sleep = nullptr;
  EXPECT_EQ(Run({"i2c", "read", "0x3500", "--wait", "5"}), 2);
}

TEST_F(ToolDefaultsTest, AListThatNamesItsDeviceNeedsNoDefault) {
  const std::string list = folder.Write("l.txt", "0xfff8, 0x20,\n0xfffe, 0x03,\n0x3500, 0x01,\n");
  EXPECT_EQ(Run({"i2c", "load", list}), 0) << err;
  EXPECT_EQ(err.find("ignored"), std::string::npos) << err;
  EXPECT_EQ(Run({"i2c", "load", list, "--slave", "0x6c"}), 0) << err;
  EXPECT_THAT(err, HasSubstr("--slave is ignored"));
}

TEST_F(ToolDefaultsTest, CommonDefaultsBelongToAWholeScript) {
  const std::string profile = folder.Write(
      "m.camera.json",
      R"({"name": "M", "cameras": [{"vid": "1234"}], "options": {"timeout": 20, "slave": 108}})");
  const std::string script = folder.Write("s.txt", "i2c read 0x3500\n");
  EXPECT_EQ(Run({"run", script, "--profile", profile}), 0) << err;
}

TEST_F(ToolDefaultsTest, AProfileOfAnotherCameraIsRefusedForNumbersToo) {
  const std::string other = std::string(BORVAN_SAMPLES) + "/virtual-4m.camera.json";
  for (const std::vector<std::string>& words : {std::vector<std::string>{"reg", "read", "0x1a3"},
                                                {"info"},
                                                {"i2c", "scan", "--yes"},
                                                {"selftest"}}) {
    std::vector<std::string> with = words;
    with.insert(with.end(), {"--profile", other});
    EXPECT_EQ(Run(with), 5) << words[0];
    EXPECT_THAT(err, HasSubstr("is for vid 1234, pid 0002, and the camera is 1234:0001"));
    EXPECT_EQ(host.Chip().transfers, 0U);
  }
  EXPECT_EQ(Run({"reg", "read", "0x1a3", "--profile", other, "--force-profile"}), 0) << err;
  host.environment["BORVANUSB_PROFILE"] = other;
  EXPECT_EQ(Run({"reg", "read", "0x1a3"}), 5);
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_EQ(Run({"reg", "find", "EXPOSURE"}), 0) << err;
  EXPECT_THAT(out, HasSubstr("0x20:"));
}

TEST_F(ToolDefaultsTest, ABrokenProfileInTheEnvironmentHindersNoHelp) {
  host.environment["BORVANUSB_PROFILE"] = folder.Name("none.camera.json");
  EXPECT_EQ(Run({"reg", "read", "0x1a3"}), 5);
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_EQ(Run({"profile", "list"}), 0);
  EXPECT_EQ(Run({"profile", "new", folder.Name("n.camera.json")}), 0) << err;
  EXPECT_EQ(Run({"reg", "read", "--help"}), 0);
}

}  // namespace
}  // namespace borvanusb::tool_test
