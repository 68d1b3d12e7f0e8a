// The tool with its real commands, on cameras in memory: the final output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command/tool.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A name that would end its line, write another line and clear the screen.
const std::string kHostile = "x\r\nborvanusb: all is well\x1B[2J";
const std::string kShown = "x??borvanusb: all is well?[2J";

class WholeToolTest : public testing::Test {
 protected:
  WholeToolTest() { host.Chip().identity.name = kHostile; }

  int Run(const std::vector<std::string>& words) {
    out.clear();
    err.clear();
    ToolStreams streams;
    streams.output = [this](std::string_view text) {
      out += text;
      return std::optional<WriteProblem>();
    };
    streams.error = [this](std::string_view text) { err += text; };
    streams.error_is_terminal = terminal;
    streams.columns = [] { return 79; };
    streams.move_up = [](int) {};
    return RunTool(words, host, streams);
  }

  // Only complete lines, none of them written by the camera.
  void ExpectClean(const std::string& text) const {
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      EXPECT_EQ(line.find_first_of("\r\x1B"), std::string::npos) << line;
      EXPECT_THAT(line, Not(StartsWith("borvanusb: all is well")));
    }
  }

 public:
  FakeHost host;
  TestFolder folder;
  bool terminal = false;
  std::string out;
  std::string err;
};

TEST_F(WholeToolTest, NameOfACameraForgesNoLine) {
  auto second = std::make_shared<FakeChip>();
  second->identity = {1, R"(\\?\usb#b)", "Second", "1234", "0002"};
  second->registers[0x1A3] = 1;
  host.chips.push_back(second);
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_EQ(out, "0  1234:0001  " + kShown + "  \\\\?\\usb#vid_1234&pid_0001#a\n" +
                     "1  1234:0002  Second" + std::string(kShown.size() - 6, ' ') +
                     "  \\\\?\\usb#b\n");
  EXPECT_EQ(Run({"info", "--camera", "0"}), 0);
  ExpectClean(out);
  EXPECT_THAT(out, StartsWith("camera            0  1234:0001  " + kShown + "\n"));
  host.system_report.devices = {{kHostile, kHostile, ""}};
  host.system_report.library = "b.dll\n";
  EXPECT_EQ(Run({"doctor"}), 0);
  ExpectClean(out);
  EXPECT_THAT(out, HasSubstr("\n  " + kShown + "  " + kShown + "\n"));
  EXPECT_THAT(out, HasSubstr("\nall is well: " + kShown + " can be used\n"));
}

TEST_F(WholeToolTest, NameOfACameraForgesNoMessage) {
  EXPECT_EQ(Run({"info", "--camera", "nothing\x1B[2J"}), 2);
  ExpectClean(err);
  EXPECT_THAT(err, HasSubstr("nothing?[2J; there are: 0  1234:0001  " + kShown));
  host.before_open = [](const CameraIdentity& camera) {
    throw Failure(ExitCode::kRefused, "camera " + camera.name + " can't be opened",
                  "First\nsecond" + camera.name.substr(3));
  };
  EXPECT_EQ(Run({"info", "--json"}), 4);
  EXPECT_EQ(err, "borvanusb: info: camera " + kShown + " can't be opened\n" +
                     "  First\n  secondborvanusb: all is well?[2J\n");
  ExpectClean(out);
  EXPECT_EQ(nlohmann::json::parse(out)["error"]["message"],
            "camera " + kHostile + " can't be opened");
}

TEST_F(WholeToolTest, JsonKeepsTheNameAndHoldsNothingThatATerminalObeys) {
  host.Chip().identity.name = kHostile + "\xC2\x9B\x7F\xE2\x80\xAE";
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"list", "--json"}, {"info", "--json"}, {"doctor", "--json"}}) {
    EXPECT_EQ(Run(words), 0);
    ExpectClean(out);
    EXPECT_THAT(out, HasSubstr("\\u001b[2J\\u009b\\u007f\\u202e"));
    EXPECT_THAT(nlohmann::json::parse(out).dump(), HasSubstr("\\u001b[2J\xC2\x9B"));
  }
}

TEST_F(WholeToolTest, WordsOfFilesForgeNoLine) {
  const std::string script = folder.Write("script.txt", "reg raed\x1B[2J\nlist \x9B\x07\n");
  EXPECT_EQ(Run({"run", script}), 1);
  ExpectClean(err);
  EXPECT_EQ(err, script + ":1: unknown command \"reg raed?[2J\"\n" + script +
                     ":2: list: \"??\" is one argument too many\n" + "borvanusb: run: " + script +
                     ": 2 problems, the first in " + script +
                     ":1: unknown command \"reg raed?[2J\"; nothing was run\n  All of them are "
                     "listed above.\n");
  const std::string echoed = folder.Write("echoed.txt", "reg read 0x1a3 # \x1B[2J\n");
  EXPECT_EQ(Run({"run", echoed}), 0);
  EXPECT_EQ(out, "> reg read 0x1a3 # ?[2J\n0x01a3  0x00\n");
}

TEST_F(WholeToolTest, TableOfSeveralCamerasIsClean) {
  auto second = std::make_shared<FakeChip>();
  second->identity.path = R"(\\?\usb#b)";
  host.chips.push_back(second);
  host.child = [](const std::vector<std::string>&,
                  const std::function<void(bool, const std::string&)>& say) {
    say(true, R"({"progress":{"stage":"read\u001b[2J","percent":10,"rate":5}})");
    say(true, "a remark\x1B[2J");
    say(false, R"({"error":{"message":"bad\u001b[2J","hint":"do\r\n\u001b[2J"}})");
    return 6;
  };
  const std::string image = folder.Write("image.bin", "image");
  for (const bool on_terminal : {true, false}) {
    terminal = on_terminal;
    EXPECT_EQ(Run({"flash", "program", image, "--all"}), 6);
    ExpectClean(out);
    ExpectClean(err);
    EXPECT_THAT(err, HasSubstr("x??borvanusb"));
    // On a terminal, the table is drawn at most ten times a second.
    EXPECT_TRUE(terminal || err.find("read?[2J 10 %") != std::string::npos) << err;
    EXPECT_THAT(err, HasSubstr("a remark?[2J\n"));
    EXPECT_THAT(err, HasSubstr("bad?[2J\n"));
  }
}

TEST_F(WholeToolTest, LogHoldsAllThatIsSaidWithTimes) {
  const std::string log = folder.Name("day.log");
  host.Chip().registers[0x100] = 0x5A;
  EXPECT_EQ(Run({"reg", "read", "0x100", "--log", log}), 0);
  EXPECT_EQ(out, "0x0100  0x5a\n");
  EXPECT_EQ(Run({"flash", "read", "0+4K", folder.Name("a.bin"), "--log", log, "--progress", "none",
                 "--camera", "9"}),
            2);
  EXPECT_EQ(
      folder.Read("day.log"),
      "2026-01-02T03:04:05Z run  borvanusb reg read 0x100 --log " + log +
          "\n"
          "2026-01-02T03:04:05Z out  0x0100  0x5a\n"
          "2026-01-02T03:04:05Z end  exit code 0\n"
          "2026-01-02T03:04:05Z run  borvanusb flash read 0+4K " +
          folder.Name("a.bin") + " --log " + log +
          " --progress none --camera 9\n"
          "2026-01-02T03:04:05Z err  borvanusb: flash read: --camera: there is no camera 9, the "
          "highest index is 0\n"
          "2026-01-02T03:04:05Z err    borvanusb list shows the cameras.\n"
          "2026-01-02T03:04:05Z end  exit code 2\n");
}

TEST_F(WholeToolTest, LogHasTheEndOfProgressAndNoBytes) {
  const std::string log = folder.Name("day.log");
  terminal = true;
  EXPECT_EQ(Run({"flash", "read", "0+4K", "-", "--log", log}), 0);
  EXPECT_EQ(out, std::string(4096, '\xFF'));
  const std::string said = folder.Read("day.log");
  EXPECT_THAT(said, HasSubstr("Z err  read: done, 4.0 KiB in "));
  EXPECT_THAT(said, HasSubstr("Z out  4096 bytes (4 KiB) of the result\n"));
  EXPECT_EQ(said.find_first_of("\r\xFF"), std::string::npos) << said;
}

TEST_F(WholeToolTest, LogThatCannotBeWrittenStopsTheCommandBeforeItsWork) {
  EXPECT_EQ(Run({"reg", "write", "0x100", "1", "--log", folder.Name("none/day.log")}), 5);
  EXPECT_THAT(err, HasSubstr("--log: can't write " + folder.Name("none/day.log")));
  EXPECT_EQ(host.Chip().transfers, 0U);
}

TEST_F(WholeToolTest, WaitTriesUntilTheCameraIsThere) {
  auto camera = host.chips.front();
  host.chips.clear();
  int sleeps = 0;
  host.on_sleep = [&] {
    if (++sleeps == 3) {
      host.chips.push_back(camera);
    }
  };
  EXPECT_EQ(Run({"reg", "read", "0x100", "--wait", "5"}), 0);
  EXPECT_EQ(err, "no USB camera is found; waiting for it, 5 s at most\n");
  EXPECT_EQ(Run({"reg", "read", "0x100"}), 0);
}

TEST_F(WholeToolTest, WaitEndsAfterItsTimeWithTheFailure) {
  host.chips.clear();
  const auto begin = host.Clock();
  EXPECT_EQ(Run({"reg", "read", "0x100", "--wait", "5"}), 2);
  EXPECT_EQ(host.Clock() - begin, std::chrono::seconds(5));
  EXPECT_THAT(err, HasSubstr("\nborvanusb: reg read: no USB camera is found\n"));
  // The tool does not wait for other failures.
  EXPECT_EQ(Run({"reg", "read", "0x100"}), 2);
  EXPECT_EQ(host.Clock() - begin, std::chrono::seconds(5));
}

TEST_F(WholeToolTest, WaitIsForBusyCamerasToo) {
  host.reserved_elsewhere = true;
  int sleeps = 0;
  host.on_sleep = [&] { host.reserved_elsewhere = ++sleeps < 2; };
  EXPECT_EQ(Run({"reg", "write", "0x100", "1", "--wait", "5"}), 0);
  EXPECT_EQ(sleeps, 2);
  host.before_open = [](const CameraIdentity&) {
    throw Failure(ExitCode::kRefused, "the camera can't be opened");
  };
  EXPECT_EQ(Run({"reg", "read", "0x100", "--wait", "1"}), 4);
  host.before_open = [](const CameraIdentity&) { throw Failure(ExitCode::kDevice, "gone"); };
  const auto begin = host.Clock();
  EXPECT_EQ(Run({"reg", "read", "0x100", "--wait", "1"}), 6);
  EXPECT_EQ(host.Clock(), begin);
}

TEST_F(WholeToolTest, StopEndsTheWaiting) {
  host.chips.clear();
  host.on_sleep = [&] { host.stop_requested = true; };
  EXPECT_EQ(Run({"reg", "read", "0x100", "--wait", "3600"}), 9);
}

// --all: the command lines of the processes, and the use of their results.
class WholeToolAllTest : public WholeToolTest {
 protected:
  WholeToolAllTest() {
    host.Chip().identity = {0, R"(\\?\usb#a)", "First", "1234", "0001"};
    auto second = std::make_shared<FakeChip>();
    second->identity = {1, R"(\\?\usb#b)", "Second", "1234", "0002"};
    host.chips.push_back(second);
  }
  void Answer(const std::string& json, int code = 0) {
    host.child = [this, json, code](const std::vector<std::string>& words,
                                    const std::function<void(bool, const std::string&)>& say) {
      lines.push_back(words);
      say(false, json);
      return code;
    };
  }

 public:
  std::vector<std::vector<std::string>> lines;
};

TEST_F(WholeToolAllTest, ListIsLoadedIntoEachCamera) {
  const std::string list = folder.Write("a.txt", "0xfffd,0\n0x8000,1,\n");
  Answer(R"({"registers":1,"verified":true,"wrong":[]})");
  EXPECT_EQ(Run({"reg", "load", "--all", "--verify", list, "--verbose", "--wait", "2"}), 0);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1],
            (std::vector<std::string>{"reg", "load", "--verify", "--camera", R"(\\?\usb#b)",
                                      "--json", "--progress", "json", "--timeout", "10.000",
                                      "--wait", "2.000", "--verbose", "--", list}));
  EXPECT_EQ(out,
            "0  1234:0001  First: 1 register written, read back equal\n"
            "1  1234:0002  Second: 1 register written, read back equal\n");
  Answer(R"({"registers":1,"verified":null,"wrong":[]})");
  lines.clear();
  EXPECT_EQ(Run({"i2c", "load", folder.Write("i.txt", "0xfff8,0x6c\n0xfffe,3\n1,1\n"), "--all"}),
            0);
  EXPECT_EQ(lines.size(), 2U);
  EXPECT_THAT(out, HasSubstr("First: 1 register written\n"));
}

TEST_F(WholeToolAllTest, OutcomeThatIsNotGoodIsAResult) {
  const std::string image = folder.Write("image.bin", "image");
  Answer(R"({"equal":false,"different_bytes":3,"first_difference":4096})", 7);
  EXPECT_EQ(Run({"flash", "verify", image, "--address", "0x1000", "--all", "--diff", "d.csv"}), 7);
  EXPECT_EQ(out,
            "0  1234:0001  First: 3 bytes differ, the first at 0x1000\n"
            "1  1234:0002  Second: 3 bytes differ, the first at 0x1000\n");
  EXPECT_THAT(lines[1], testing::Contains("--diff=d-1.csv"));
  EXPECT_EQ(Run({"flash", "verify", image, "--address", "0x1000", "--all", "--json"}), 7);
  std::istringstream stream(out);
  for (std::string line; std::getline(stream, line);) {
    EXPECT_EQ(BreachOfSchema("several", nlohmann::ordered_json::parse(line)), "") << line;
  }
}

TEST_F(WholeToolAllTest, EachCamerasFlashHasAFileOfItsOwn) {
  Answer(R"({"size":4096,"file":"x"})");
  EXPECT_EQ(Run({"flash", "read", "0+4K", "flash-{index}-{vid}{pid}.bin", "--all"}), 0);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].back(), "flash-0-12340001.bin");
  EXPECT_EQ(lines[1].back(), "flash-1-12340002.bin");
  lines.clear();
  EXPECT_EQ(Run({"flash", "read", "0+4K", "flash.bin", "--all"}), 1);
  EXPECT_THAT(err, HasSubstr("one file can't hold the flash of several cameras"));
  EXPECT_EQ(Run({"flash", "read", "0+4K", "--camera", "0", "--camera", "1"}), 1);
  EXPECT_EQ(Run({"flash", "read", "0+4K", "-", "--all"}), 1);
  EXPECT_TRUE(lines.empty());
  EXPECT_EQ(Run({"flash", "read", "0+4K", folder.Name("one-{pid}.bin"), "--camera", "1"}), 0);
  EXPECT_EQ(folder.Read("one-0002.bin").size(), 4096U);
}

TEST_F(WholeToolAllTest, InfoOfEachCameraIsALine) {
  Answer(R"({"feature_register":32,"fast_i2c":true,"flash":{"size":null,"how":"?"}})");
  EXPECT_EQ(Run({"info", "--all"}), 0);
  EXPECT_EQ(out,
            "0  1234:0001  First: feature register 0x20, fast I2C lists, flash of unknown size\n"
            "1  1234:0002  Second: feature register 0x20, fast I2C lists, flash of unknown size\n");
  EXPECT_EQ(std::ranges::count(lines[0], "--progress"), 0);
}

TEST_F(WholeToolAllTest, WhatCannotBeForSeveralIsRefused) {
  EXPECT_EQ(Run({"info", "--all", "--camera", "0"}), 1);
  EXPECT_EQ(Run({"reg", "load", "-", "--all"}), 1);
  EXPECT_EQ(Run({"reg", "load", "a.txt", "--all", "--check-only"}), 1);
}

TEST_F(WholeToolTest, TextsOfManyLinesKeepThem) {
  EXPECT_EQ(Run({"manual"}), 0);
  EXPECT_THAT(out, StartsWith(".TH BORVANUSB"));
  EXPECT_THAT(out, HasSubstr("\n.SH NAME\n"));
  EXPECT_EQ(out.find('?'), out.find("\\?"));
  EXPECT_EQ(Run({"completion", "bash"}), 0);
  EXPECT_THAT(out, HasSubstr("\n_borvanusb() {\n"));
}

}  // namespace
}  // namespace borvanusb::tool_test
