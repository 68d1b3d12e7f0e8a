// The values that command lines are parsed to.
#include <gtest/gtest.h>

#include "command/completion.h"
#include "command/manual.h"
#include "command_line_support.h"
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "i2c/dump.h"
#include "i2c/load.h"
#include "i2c/read.h"
#include "i2c/scan.h"
#include "i2c/write.h"
#include "registers/diff.h"
#include "registers/dump.h"
#include "registers/load.h"
#include "registers/read.h"
#include "registers/write.h"
#include "station/bench.h"
#include "station/doctor.h"
#include "station/info.h"
#include "station/list.h"
#include "station/run.h"
#include "station/selftest.h"
#include "station/watch.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;

Arguments Parsed(const std::vector<std::string>& words) {
  return std::get<Arguments>(ParseCommandLine(words));
}

TEST(CommandLineTest, CommonOptionsStandBeforeOrAfterTheCommand) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"--camera", "1", "--camera", "b", "--json", "--timeout", "2.5",
                                 "--trace", "t.txt", "--progress", "lines", "--verbose", "reg",
                                 "read", "5"},
        {"reg", "read", "5", "--camera=1", "--camera=b", "--json", "--timeout=2.5", "--trace=t.txt",
         "--progress=lines", "--verbose"},
        {"--json", "reg", "--camera", "1", "--verbose", "read", "--camera", "b", "--timeout", "2.5",
         "5", "--trace", "t.txt", "--progress", "lines"}}) {
    const CommonArguments common = Parsed(words).common;
    EXPECT_EQ(common.cameras, (std::vector<std::string>{"1", "b"}));
    EXPECT_TRUE(common.json);
    EXPECT_TRUE(common.verbose);
    EXPECT_FALSE(common.quiet);
    EXPECT_EQ(common.timeout, milliseconds(2500));
    EXPECT_EQ(common.trace, "t.txt");
    EXPECT_EQ(common.progress, ProgressMode::kLines);
  }
}

TEST(CommandLineTest, CommonOptionsMayBeLeftOut) {
  const CommonArguments common = Parsed({"list"}).common;
  EXPECT_TRUE(common.cameras.empty());
  EXPECT_FALSE(common.json || common.quiet || common.verbose);
  EXPECT_EQ(common.timeout, milliseconds(10000));
  EXPECT_EQ(common.trace, "");
  EXPECT_EQ(common.progress, ProgressMode::kAuto);
}

TEST(CommandLineTest, CameraStandsWhereOneOfTwoSidesIsTheCamera) {
  EXPECT_EQ(Parsed({"reg", "diff", "a.txt", "camera", "--camera", "1"}).common.cameras.size(), 1U);
  EXPECT_EQ(Parsed({"reg", "diff", "camera", "a.txt", "--camera", "1"}).common.cameras.size(), 1U);
  EXPECT_EQ(Parsed({"reg", "load", "a.txt", "--camera", "1"}).common.cameras.size(), 1U);
}

TEST(CommandLineTest, TimeoutGoesFromATenthOfASecondToAnHour) {
  EXPECT_EQ(Parsed({"list", "--timeout", "0.1"}).common.timeout, milliseconds(100));
  EXPECT_EQ(Parsed({"list", "--timeout", "3600"}).common.timeout, milliseconds(3600000));
}

TEST(CommandLineTest, EveryProgressFormHasItsName) {
  EXPECT_EQ(Parsed({"bench", "--progress", "auto"}).common.progress, ProgressMode::kAuto);
  EXPECT_EQ(Parsed({"bench", "--progress", "bar"}).common.progress, ProgressMode::kBar);
  EXPECT_EQ(Parsed({"bench", "--progress", "json"}).common.progress, ProgressMode::kJson);
  EXPECT_EQ(Parsed({"bench", "--progress", "none"}).common.progress, ProgressMode::kNone);
}

TEST(CommandLineTest, CommandsAboutCameras) {
  EXPECT_FALSE(As<ListCommand>({"list"}).watch);
  EXPECT_TRUE(As<ListCommand>({"list", "--watch"}).watch);
  EXPECT_EQ(As<WatchCommand>({"watch", "CHIP.CTRL", "SENSOR.*"}).words,
            (std::vector<std::string>{"CHIP.CTRL", "SENSOR.*"}));
  EXPECT_EQ(As<InfoCommand>({"info"}).flash_size, std::nullopt);
  EXPECT_EQ(As<InfoCommand>({"info", "--flash-size", "4M"}).flash_size, 4194304U);
  EXPECT_TRUE(ValuesOf<DoctorCommand>(*Parsed({"doctor"}).command) != nullptr);
  const auto selftest = As<SelftestCommand>({"selftest", "--slave", "0x6c", "--mode", "8/8"});
  EXPECT_EQ(selftest.i2c.slave, 0x6CU);
  EXPECT_EQ(selftest.i2c.mode, 0);
}

TEST(CommandLineTest, RegisterCommands) {
  const auto read = As<RegReadCommand>({"reg", "read", "0x1000-0x100f", "--wide"});
  EXPECT_EQ(read.range, (Range{0x1000, 0x100F}));
  EXPECT_TRUE(read.wide);
  const auto write =
      As<RegWriteCommand>({"reg", "write", "0x1a3", "255", "--mask", "0x0f", "--verify"});
  EXPECT_EQ(write.address, 0x1A3U);
  EXPECT_EQ(write.value, 255U);
  EXPECT_EQ(write.mask, 0x0FU);
  EXPECT_TRUE(write.verify);
  EXPECT_FALSE(write.wide);
  EXPECT_EQ(As<RegWriteCommand>({"reg", "write", "0", "0xffffffff", "--wide"}).value, 0xFFFFFFFFU);
  const auto dump = As<RegDumpCommand>({"reg", "dump", "0x1000+16"});
  EXPECT_EQ(dump.range, (Range{0x1000, 0x100F}));
  EXPECT_EQ(dump.file, "");
  EXPECT_EQ(As<RegDumpCommand>({"reg", "dump", "1", "a.txt"}).file, "a.txt");
  EXPECT_FALSE(As<RegLoadCommand>({"reg", "load", "a.txt"}).check_only);
  EXPECT_TRUE(As<RegLoadCommand>({"reg", "load", "--check-only", "a.txt"}).check_only);
  EXPECT_FALSE(As<RegLoadCommand>({"reg", "load", "a.txt"}).verify);
  const auto load = As<RegLoadCommand>({"reg", "load", "a.txt", "--verify", "--markers", "page"});
  EXPECT_TRUE(load.verify);
  EXPECT_EQ(load.markers, ListMarkers::kPage);
  EXPECT_EQ(As<RegLoadCommand>({"reg", "load", "a.txt", "--verify", "--markers", "delays"}).markers,
            ListMarkers::kDelays);
  const auto diff = As<RegDiffCommand>({"reg", "diff", "a.txt", "camera"});
  EXPECT_EQ(diff.left, "a.txt");
  EXPECT_EQ(diff.right, "camera");
}

TEST(CommandLineTest, I2cCommands) {
  const auto read = As<I2cReadCommand>(
      {"i2c", "read", "0x300a-0x300b", "--slave", "108", "--mode", "16/16", "--option", "3"});
  EXPECT_EQ(read.range, (Range{0x300A, 0x300B}));
  EXPECT_EQ(read.i2c.slave, 108U);
  EXPECT_EQ(read.i2c.mode, 2);
  EXPECT_EQ(read.i2c.option, 3U);
  const auto write = As<I2cWriteCommand>({"i2c", "write", "0xffffffff", "0xffff", "--slave", "0",
                                          "--mode", "4", "--mask", "0xff00", "--verify"});
  EXPECT_EQ(write.address, 0xFFFFFFFFU);
  EXPECT_EQ(write.value, 0xFFFFU);
  EXPECT_EQ(write.mask, 0xFF00U);
  EXPECT_TRUE(write.verify);
  EXPECT_EQ(write.i2c.mode, 4);
  const auto dump = As<I2cDumpCommand>({"i2c", "dump", "0-0xff", "s.txt", "--slave", "255"});
  EXPECT_EQ(dump.file, "s.txt");
  EXPECT_EQ(dump.i2c.mode, 1);
  const auto load = As<I2cLoadCommand>({"i2c", "load", "s.txt", "--check-only"});
  EXPECT_EQ(load.i2c.slave, std::nullopt);
  EXPECT_TRUE(load.check_only);
  EXPECT_FALSE(load.verify);
  EXPECT_TRUE(As<I2cLoadCommand>({"i2c", "load", "s.txt", "--verify"}).verify);
  const auto scan =
      As<I2cScanCommand>({"i2c", "scan", "--slaves", "0x20-0x7f", "--address", "0x300a", "--yes"});
  EXPECT_EQ(scan.slaves, (Range{0x20, 0x7F}));
  EXPECT_EQ(scan.address, 0x300AU);
  EXPECT_TRUE(scan.yes);
  EXPECT_EQ(As<I2cScanCommand>({"i2c", "scan"}).slaves, (Range{0, 255}));
  EXPECT_EQ(As<I2cScanCommand>({"i2c", "scan", "--modes", "all"}).modes,
            (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5}));
}

TEST(CommandLineTest, WidthModesHaveNamesAndNumbers) {
  const std::vector<std::string> names = {"8/8", "16/8", "16/16", "32/8", "32/16", "32/32"};
  for (std::int32_t mode = 0; mode < 6; ++mode) {
    const auto place = static_cast<std::size_t>(mode);
    for (const std::string& text : {names[place], std::to_string(mode)}) {
      EXPECT_EQ(As<I2cReadCommand>({"i2c", "read", "1", "--slave", "1", "--mode", text}).i2c.mode,
                mode);
    }
  }
}

TEST(CommandLineTest, FlashCommands) {
  const auto read = As<FlashReadCommand>({"flash", "read", "0+1M", "b.bin"});
  EXPECT_EQ(read.range, (Range{0, 0xFFFFF}));
  EXPECT_EQ(read.file, "b.bin");
  EXPECT_EQ(As<FlashWordCommand>({"flash", "word", "256K"}).value, std::nullopt);
  const auto word = As<FlashWordCommand>({"flash", "word", "256K", "0x12345678", "--yes"});
  EXPECT_EQ(word.address, 0x40000U);
  EXPECT_EQ(word.value, 0x12345678U);
  EXPECT_TRUE(word.yes);
  const auto erase = As<FlashEraseCommand>({"flash", "erase", "0x40000+256K"});
  EXPECT_EQ(erase.range, (Range{0x40000, 0x7FFFF}));
  EXPECT_FALSE(erase.yes);
  EXPECT_EQ(As<FlashMapCommand>({"flash", "map"}).range, std::nullopt);
  const auto map = As<FlashMapCommand>({"flash", "map", "0+64K", "--flash-size", "512K"});
  EXPECT_EQ(map.range, (Range{0, 0xFFFF}));
  EXPECT_EQ(map.flash_size, 524288U);
  const auto verify =
      As<FlashVerifyCommand>({"flash", "verify", "i.bin", "--address", "1M", "--diff", "d.csv"});
  EXPECT_EQ(verify.image, "i.bin");
  EXPECT_EQ(verify.address, 0x100000U);
  EXPECT_EQ(verify.diff, "d.csv");
}

TEST(CommandLineTest, ProgrammingIsCarefulUnlessToldOtherwise) {
  const auto careful = As<FlashProgramCommand>({"flash", "program", "i.bin"});
  EXPECT_EQ(careful.image, "i.bin");
  EXPECT_EQ(careful.address, std::nullopt);
  EXPECT_TRUE(careful.verify && careful.backup);
  EXPECT_FALSE(careful.dry_run || careful.restore_on_failure || careful.force || careful.all);
  const auto hasty = As<FlashProgramCommand>({"flash", "program", "i.bin", "--address", "0x40000",
                                              "--no-verify", "--no-backup", "--force", "--all",
                                              "--report", "r.json", "--flash-size", "1M"});
  EXPECT_EQ(hasty.address, 0x40000U);
  EXPECT_FALSE(hasty.verify || hasty.backup);
  EXPECT_TRUE(hasty.force && hasty.all);
  EXPECT_EQ(hasty.report, "r.json");
  EXPECT_EQ(hasty.flash_size, 1048576U);
  const auto safe = As<FlashProgramCommand>(
      {"flash", "program", "i.bin", "--backup", "old.bin", "--restore-on-failure"});
  EXPECT_EQ(safe.backup_file, "old.bin");
  EXPECT_TRUE(safe.restore_on_failure);
  EXPECT_TRUE(As<FlashProgramCommand>({"flash", "program", "i.bin", "--dry-run"}).dry_run);
}

TEST(CommandLineTest, WatchTakesSeveralRanges) {
  const auto watch =
      As<WatchCommand>({"watch",   "--reg", "1",       "--reg", "0x10+2",   "--i2c", "0x3500",
                        "--slave", "0x6c",  "--mode",  "16/16", "--option", "1",     "--wide",
                        "--rate",  "0.5",   "--count", "7",     "--csv",    "c.csv"});
  EXPECT_EQ(watch.registers, (std::vector<Range>{{1, 1}, {0x10, 0x11}}));
  EXPECT_EQ(watch.i2c_registers, (std::vector<Range>{{0x3500, 0x3500}}));
  EXPECT_EQ(watch.i2c.slave, 0x6CU);
  EXPECT_EQ(watch.i2c.mode, 2);
  EXPECT_EQ(watch.i2c.option, 1U);
  EXPECT_TRUE(watch.wide);
  EXPECT_EQ(watch.rate, 0.5);
  EXPECT_EQ(watch.count, 7U);
  EXPECT_EQ(watch.csv, "c.csv");
  const auto plain = As<WatchCommand>({"watch", "--reg", "1"});
  EXPECT_EQ(plain.rate, 2);
  EXPECT_EQ(plain.count, std::nullopt);
}

TEST(CommandLineTest, CommandsForScriptsAndShells) {
  EXPECT_EQ(As<BenchCommand>({"bench"}).rounds, 200U);
  EXPECT_EQ(As<BenchCommand>({"bench", "--rounds", "1000000"}).rounds, 1000000U);
  const auto run = As<RunCommand>({"run", "s.txt", "--keep-going"});
  EXPECT_EQ(run.file, "s.txt");
  EXPECT_TRUE(run.keep_going);
  EXPECT_EQ(As<CompletionCommand>({"completion", "bash"}).shell, Shell::kBash);
  EXPECT_EQ(As<CompletionCommand>({"completion", "powershell"}).shell, Shell::kPowerShell);
  EXPECT_TRUE(ValuesOf<ManualCommand>(*Parsed({"manual"}).command) != nullptr);
}

TEST(CommandLineTest, ValueMayBeginWithADash) {
  EXPECT_EQ(Parsed({"info", "--camera", "-x"}).common.cameras, (std::vector<std::string>{"-x"}));
  EXPECT_EQ(Parsed({"info", "--camera=--y=z"}).common.cameras, (std::vector<std::string>{"--y=z"}));
  EXPECT_EQ(As<RegLoadCommand>({"reg", "load", "--", "-x"}).file, "-x");
  EXPECT_EQ(As<RegLoadCommand>({"reg", "load", "--json", "--", "--json"}).file, "--json");
  EXPECT_EQ(As<RegLoadCommand>({"reg", "load", "-"}).file, "-");
}

TEST(CommandLineTest, ValueIsTakenAsItIs) {
  for (const std::string text : {"list", "read", "a b", "/json", "[a,b]", "{}", "\"q\"", "a=b",
                                 "Kamera \xC3\xA4\xE6\x97\xA5.txt"}) {
    EXPECT_EQ(As<RegLoadCommand>({"reg", "load", text}).file, text);
    EXPECT_EQ(Parsed({"info", "--camera", text}).common.cameras, (std::vector<std::string>{text}));
  }
}

TEST(CommandLineTest, CommandIsKnownByItsWords) {
  EXPECT_EQ(Parsed({"list"}).words, "list");
  EXPECT_EQ(Parsed({"flash", "program", "x"}).words, "flash program");
  EXPECT_EQ(Parsed({"i2c", "scan"}).words, "i2c scan");
}

TEST(CommandLineTest, VersionIsTheProjects) {
  EXPECT_EQ(std::get<TextAnswer>(ParseCommandLine({"--version"})).text,
            "borvanusb " BORVAN_VERSION "\n");
}

TEST(SplitLineTest, WordsStandBetweenBlanks) {
  EXPECT_EQ(SplitLine(" reg  read\t0x1a3 \r"), (std::vector<std::string>{"reg", "read", "0x1a3"}));
  EXPECT_TRUE(SplitLine("").empty());
  EXPECT_TRUE(SplitLine(" \t").empty());
}

TEST(SplitLineTest, QuotesHoldBlanksTogether) {
  EXPECT_EQ(SplitLine(R"(run "C:\a b\c.txt" --camera="My cam" "")"),
            (std::vector<std::string>{"run", R"(C:\a b\c.txt)", "--camera=My cam", ""}));
  EXPECT_EQ(SplitLine(R"("# no remark" a#b)"), (std::vector<std::string>{"# no remark", "a#b"}));
}

TEST(SplitLineTest, NumberSignOpensARemark) {
  EXPECT_EQ(SplitLine("list # \"all"), (std::vector<std::string>{"list"}));
  EXPECT_TRUE(SplitLine("# list").empty());
}

}  // namespace
}  // namespace borvanusb::tool_test
