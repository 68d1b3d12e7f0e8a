// Invalid command lines: the message names the argument and what is allowed.
#include <gtest/gtest.h>

#include "command/nearest.h"
#include "command_line_support.h"

namespace borvanusb::tool_test {
namespace {

void ExpectWrongUse(const Words& words, const std::string& message) {
  ExpectRefused(words, message);
  const std::string hint = FailureOf(words).Hint();
  EXPECT_TRUE(hint.ends_with("--help shows more.")) << hint;
}

TEST(CommandLineErrorsTest, NoCommandSaysWhereToBegin) {
  const Failure failure = FailureOf({});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "a command is missing, such as borvanusb list");
  EXPECT_EQ(failure.Hint(), "borvanusb --help shows all commands and what to do first.");
}

TEST(CommandLineErrorsTest, HintIsTheCommandsOwnHelp) {
  EXPECT_EQ(FailureOf({"flash", "word", "x"}).Hint(), "borvanusb flash word --help shows more.");
  EXPECT_EQ(FailureOf({"reg"}).Hint(), "borvanusb reg --help shows more.");
  EXPECT_EQ(FailureOf({"raed"}).Hint(), "borvanusb --help shows more.");
}

TEST(CommandLineErrorsTest, UnknownCommandSuggestsTheNearest) {
  ExpectWrongUse({"lits"}, "unknown command \"lits\"; did you mean list?");
  ExpectWrongUse({"reg", "raed"}, "unknown command \"reg raed\"; did you mean reg read?");
  ExpectWrongUse({"dump", "1"}, "unknown command \"dump\"; did you mean reg dump or i2c dump?");
  ExpectWrongUse({"scan"}, "unknown command \"scan\"; did you mean i2c scan?");
  ExpectWrongUse({"a\nb"}, "unknown command \"a?b\"");
  ExpectWrongUse({"reg"},
                 "reg: a subcommand is missing: read, write, show, find, dump, load, diff");
}

TEST(CommandLineErrorsTest, WordIsShownWholeUnlessItIsEndless) {
  const std::string longest(256, 'x');
  ExpectWrongUse({longest}, "unknown command \"" + longest + "\"");
  ExpectWrongUse({longest + "y"}, "unknown command \"" + longest + "...\"");
  // 127 characters of two bytes fit, but only half of the next one.
  std::string two_bytes = "x";
  for (int i = 0; i < 127; ++i) {
    two_bytes += "\xC3\xA4";
  }
  ExpectWrongUse({two_bytes + "\xC3\xA4"}, "unknown command \"" + two_bytes + "...\"");
}

TEST(CommandLineErrorsTest, UnknownOptionSuggestsTheNearest) {
  ExpectWrongUse({"reg", "read", "1", "--wdie"},
                 "reg read: unknown option \"--wdie\"; did you mean --wide?");
  ExpectWrongUse({"list", "--jsn=1"}, "list: unknown option \"--jsn\"; did you mean --json?");
  ExpectWrongUse({"list", "--verify"}, "list: unknown option \"--verify\"");
  ExpectWrongUse({"--frob"}, "unknown option \"--frob\"");
}

TEST(CommandLineErrorsTest, OptionWithoutItsValue) {
  ExpectWrongUse({"reg", "write", "1", "2", "--mask"},
                 "--mask: M is missing: change only the bits that are 1 in M; reads first");
  ExpectWrongUse({"--camera=", "list"}, "--camera: a value is missing after the =");
  ExpectWrongUse({"--json=", "list"}, "--json: takes no value");
  ExpectWrongUse({"list", "--json=yes"}, "--json: takes no value");
}

TEST(CommandLineErrorsTest, MissingValueNamesTheCommandsOwnOption) {
  ExpectWrongUse({"flash", "verify", "i.bin", "--address"},
                 "--address: ADDR is missing: where address 0 of the image goes, default 0");
  ExpectWrongUse({"i2c", "scan", "--address"},
                 "--address: A is missing: register that is read from each, default 0");
  EXPECT_EQ(FailureOf({"flash", "verify", "i.bin", "--address"}).Hint(),
            "borvanusb flash verify --help shows more.");
  EXPECT_EQ(FailureOf({"--camera"}).Hint(), "borvanusb --help shows more.");
  // Several commands have options of the same name.
  for (const CommandDescription& command : DescribeTool().commands) {
    for (const OptionDescription& option : command.options) {
      if (!option.positional && !option.value.empty()) {
        Words words = command.words;
        words.push_back(option.names.back());
        ExpectWrongUse(words,
                       option.names.back() + ": " + option.value + " is missing: " + option.text);
      }
    }
  }
}

TEST(CommandLineErrorsTest, ArgumentMissingTooManyOrTwice) {
  ExpectWrongUse({"reg", "write", "1"}, "reg write: VALUE is missing: what to write");
  ExpectWrongUse({"reg", "load", "a", "list"}, "reg load: \"list\" is one argument too many");
  ExpectWrongUse({"i2c", "read", "1"},
                 "i2c read: --slave is missing: the device's address on the bus, 0 to 255, not "
                 "shifted");
  ExpectWrongUse({"i2c", "scan", "--mode", "1", "--mode", "2"}, "--mode: is given more than once");
}

TEST(CommandLineErrorsTest, NumbersSayWhatIsAllowed) {
  ExpectWrongUse(
      {"flash", "word", "12g"},
      "ADDR: \"12g\" is not a valid address: a number from 0 to 0xffffffff, decimal or with 0x");
  ExpectWrongUse({"reg", "write", "0x100000000", "1"},
                 "WHAT: \"0x100000000\" is not a valid address: a number from 0 to 0xffffffff, "
                 "decimal or with 0x");
  ExpectWrongUse({"reg", "read", "9-1"},
                 "WHAT: \"9-1\" is not a valid address or range: 0x1000, 0x1000-0x1fff or "
                 "0x1000+256, up to 0xffffffff");
  ExpectWrongUse(
      {"reg", "write", "1", "-1"},
      "WHAT: \"-1\" is not a valid number: a number from 0 to 0xffffffff, decimal or with 0x");
  ExpectWrongUse({"bench", "--rounds", "0"},
                 "--rounds: \"0\" is not allowed: a number from 1 to 1000000, decimal or with 0x");
  ExpectWrongUse({"i2c", "read", "1", "--slave", "256"},
                 "--slave: \"256\" is not allowed: a number from 0 to 255, decimal or with 0x");
  ExpectWrongUse({"info", "--flash-size", "1000"},
                 "--flash-size: \"1000\" is not a valid flash size: a multiple of 4096, such as "
                 "512K or 4M, up to 4096M");
  ExpectWrongUse({"i2c", "read", "1", "--slave", "1", "--mode", "8/16"},
                 "--mode: \"8/16\" is not a valid width mode: bits of address and data, 8/8, 16/8, "
                 "16/16, 32/8, 32/16 or 32/32, or 0 to 5");
  ExpectWrongUse({"i2c", "scan", "--slaves", "0-256"},
                 "--slaves: \"0-256\" is not allowed: device addresses go from 0 to 255");
}

TEST(CommandLineErrorsTest, DecimalsSayWhatIsAllowed) {
  for (const std::string text : {"0.09", "3600.1", "nan", "inf", "1e3", "", "1,5", "-1", "0x10"}) {
    ExpectWrongUse({"list", "--timeout", text},
                   "--timeout: \"" + text +
                       "\" is not allowed: a number from 0.1 to 3600, decimals with a point");
  }
  ExpectWrongUse(
      {"watch", "--reg", "1", "--rate", "1001"},
      "--rate: \"1001\" is not allowed: a number from 0.1 to 1000, decimals with a point");
}

TEST(CommandLineErrorsTest, ChoicesAreListed) {
  ExpectWrongUse({"bench", "--progress", "Bar"},
                 "--progress: \"Bar\" is not allowed: auto, bar, lines, json or none");
  ExpectWrongUse({"completion", "csh"},
                 "SHELL: \"csh\" is not allowed: bash, fish, powershell or zsh");
}

TEST(CommandLineErrorsTest, EmptyTextsAreVariablesThatWereNeverSet) {
  ExpectWrongUse({"reg", "load", ""}, "FILE: \"\" is not a valid file name");
  ExpectWrongUse({"info", "--camera", ""},
                 "--camera: \"\" is not a valid camera: its index, path, vid:pid or name, or 3 or "
                 "more characters of path or name");
}

TEST(CommandLineErrorsTest, ValuesFitTheRegistersWidth) {
  ExpectWrongUse({"reg", "write", "1", "0x100"},
                 "VALUE: 0x100 is too big for a register of 8 bits without --wide: 0 to 0xff");
  ExpectWrongUse({"reg", "write", "1", "1", "--mask", "256"},
                 "--mask: 0x100 is too big for a register of 8 bits without --wide: 0 to 0xff");
  ExpectWrongUse({"i2c", "write", "1", "0x100", "--slave", "1"},
                 "VALUE: 0x100 is too big for the data of width mode 16/8: 0 to 0xff");
  ExpectWrongUse({"i2c", "write", "1", "1", "--mask", "0x10000", "--slave", "1", "--mode", "16/16"},
                 "--mask: 0x10000 is too big for the data of width mode 16/16: 0 to 0xffff");
  ExpectWrongUse({"i2c", "write", "0x10000", "1", "--slave", "1"},
                 "ADDR: 0x10000 is too big for the addresses of width mode 16/8: 0 to 0xffff");
  ExpectWrongUse({"i2c", "dump", "0+257", "--slave", "1", "--mode", "8/8"},
                 "RANGE: 0x100 is too big for the addresses of width mode 8/8: 0 to 0xff");
  ExpectWrongUse({"i2c", "scan", "--address", "0x10000"},
                 "--address: 0x10000 is too big for the addresses of width mode 16/8: 0 to 0xffff");
  ExpectWrongUse({"watch", "--i2c", "0x10000", "--slave", "1"},
                 "--i2c: 0x10000 is too big for the addresses of width mode 16/8: 0 to 0xffff");
}

TEST(CommandLineErrorsTest, ContradictionsAreRefused) {
  ExpectWrongUse({"list", "--quiet", "--verbose"}, "--quiet: contradicts --verbose");
  ExpectWrongUse({"flash", "program", "i", "--backup", "b", "--no-backup"},
                 "--no-backup: contradicts --backup");
  for (const char* const kind : {"reg", "i2c"}) {
    ExpectWrongUse({kind, "load", "a.txt", "--verify", "--check-only"},
                   "--verify: reads back what was written, and --check-only writes nothing");
  }
  ExpectWrongUse({"reg", "load", "a.txt", "--markers", "page"},
                 "--markers: says what --verify reads back, which is not given");
  ExpectWrongUse({"flash", "program", "i", "--all", "--camera", "1"},
                 "--all: means every camera, --camera only some: give one of the two");
  const std::string one_file =
      "--backup: one file can't hold the backups of several cameras; omit it to name the files "
      "after the cameras";
  ExpectWrongUse({"flash", "program", "i", "--all", "--backup", "b"}, one_file);
  ExpectWrongUse({"flash", "program", "i", "--camera=0", "--camera=1", "--backup", "b"}, one_file);
  ExpectWrongUse({"flash", "program", "i", "--restore-on-failure", "--dry-run"},
                 "--restore-on-failure: a dry run changes nothing that could be restored");
  ExpectWrongUse({"flash", "program", "i", "--restore-on-failure", "--no-backup"},
                 "--restore-on-failure: needs the backup, which --no-backup leaves out");
  ExpectWrongUse({"flash", "program", "i", "--no-verify", "--dry-run"},
                 "--no-verify: a dry run verifies nothing");
  ExpectWrongUse({"reg", "diff", "camera", "camera"},
                 "B: camera is given twice; a file by that name is ./camera");
  ExpectWrongUse({"selftest", "--mode", "8/8"},
                 "--mode: describes a sensor's registers; needs --slave, the sensor's address");
}

// An ignored option would make its user believe that it has an effect.
TEST(CommandLineErrorsTest, CommonOptionThatWouldBeIgnoredIsRefused) {
  ExpectWrongUse({"list", "--camera", "9"},
                 "--camera: does not apply to list, which lists all cameras");
  ExpectWrongUse({"--camera", "", "list"},
                 "--camera: does not apply to list, which lists all cameras");
  ExpectWrongUse({"list", "--watch", "--trace", "t"},
                 "--trace: does not apply to list, which makes no transfers");
  ExpectWrongUse({"doctor", "--camera", "1"},
                 "--camera: does not apply to doctor, which examines all cameras");
  for (const Words& command : std::vector<Words>{{"list"},
                                                 {"info"},
                                                 {"doctor"},
                                                 {"reg", "write", "1", "2"},
                                                 {"i2c", "write", "1", "2", "--slave", "1"},
                                                 {"watch", "--reg", "1"},
                                                 {"completion", "bash"},
                                                 {"map", "check", "a.svd"},
                                                 {"profile", "check", "a.camera.json"},
                                                 {"manual"}}) {
    Words words = command;
    words.insert(words.end(), {"--progress", "none"});
    EXPECT_TRUE(
        FailureOf(words).Message().starts_with("--progress: does not apply to " + command[0]))
        << FailureOf(words).Message();
  }
  for (const Words& command : std::vector<Words>{{"completion", "bash"}, {"manual"}}) {
    for (const Words& option : std::vector<Words>{
             {"--camera", "1"}, {"--timeout", "5"}, {"--trace", "t"}, {"--verbose"}}) {
      Words words = command;
      words.insert(words.end(), option.begin(), option.end());
      ExpectWrongUse(words,
                     option[0] + ": does not apply to " + command[0] + ", which uses no camera");
    }
  }
  for (const char* const option : {"--camera", "--trace"}) {
    for (const char* const command : {"reg", "i2c"}) {
      ExpectWrongUse(
          {command, "load", "a.txt", "--check-only", option, "1"},
          std::string(option) + ": does not apply to --check-only, which uses no camera");
    }
    ExpectWrongUse(
        {"reg", "diff", "a.txt", "b.txt", option, "1"},
        std::string(option) + ": does not apply to two lists, which are compared without a camera");
  }
}

TEST(CommandLineErrorsTest, WatchNeedsSomethingToWatch) {
  ExpectWrongUse({"watch"}, "watch: what to watch is missing: names, --reg RANGE or --i2c RANGE");
  ExpectWrongUse({"watch", "--i2c", "1"},
                 "--i2c: needs --slave N, the device's address on the bus, 0 to 255");
  ExpectWrongUse({"watch", "--i2c", "1", "--slave", "1", "--wide"},
                 "--wide: is for the chip's registers; --reg must say which");
  ExpectWrongUse({"watch", "--reg", "1", "--option", "0"},
                 "--option: is for registers over I2C; --i2c must say which");
}

TEST(CommandLineErrorsTest, OpenQuoteOfAScriptIsRefused) {
  try {
    SplitLine("reg load \"a b");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), ExitCode::kUsage);
    EXPECT_EQ(failure.Message(), "the quote before \"a b\" is never closed");
  }
}

TEST(NearestWordTest, NearIsAThirdOfTheLetters) {
  EXPECT_EQ(NearestWord("verfy", {"write", "verify"}), "verify");
  EXPECT_EQ(NearestWord("ifno", {"info"}), "info");
  EXPECT_EQ(NearestWord("prog", {"erase", "program"}), "program");
  EXPECT_EQ(NearestWord("abc", {"xyz"}), "");
  EXPECT_EQ(NearestWord(std::string(100000, 'x'), {"list"}), "");
}

}  // namespace
}  // namespace borvanusb::tool_test
