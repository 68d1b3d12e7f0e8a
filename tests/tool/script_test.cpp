// Scripts of `run`.
#include "station/script.h"
#include "station/info.h"
#include "station/list.h"
#include "station/run.h"

#include <sstream>

#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

// Replaces the command line parser: the word selects the command.
std::optional<LineCommand> ReadWord(const std::string& line) {
  if (line.empty() || line.front() == '#') {
    return std::nullopt;
  }
  std::istringstream words(line);
  std::string word;
  words >> word;
  Arguments arguments;
  if (word == "info") {
    arguments.command = std::make_shared<CommandOf<InfoCommand>>();
  } else if (word == "list") {
    arguments.command = std::make_shared<CommandOf<ListCommand>>();
  } else if (word == "run") {
    arguments.command = std::make_shared<CommandOf<RunCommand>>();
  } else {
    throw Failure(ExitCode::kUsage, word + " is no command", "borvanusb --help");
  }
  while (words >> word) {
    if (word == "--json") {
      arguments.common.json = true;
    } else {
      arguments.common.cameras.push_back(word);
    }
  }
  return LineCommand{arguments};
}

class ScriptTest : public testing::Test {
 protected:
  // "info" runs `info_`; "list" writes a line.
  ExitCode Do(const std::string& text, bool keep_going = false) {
    const auto lines = ReadScript("work.txt", text, ReadWord, desk_.context);
    const ExitCode code = RunScript(
        "work.txt", lines, keep_going,
        [this](const Command& command, Context& context) {
          cameras_.push_back(context.common.cameras);
          if (ValuesOf<InfoCommand>(command) != nullptr) {
            return info_();
          }
          context.output.Line("listed");
          context.result = {{"cameras", nlohmann::ordered_json::array()}};
          return ExitCode::kDone;
        },
        desk_.context);
    EXPECT_EQ(BreachOfSchema("run", desk_.result), "") << desk_.result.dump(2);
    return code;
  }

  std::string FailureMessage(const std::string& text, ExitCode code = ExitCode::kUsage) {
    desk_.output.errors.clear();
    try {
      ReadScript("work.txt", text, ReadWord, desk_.context);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Code(), code);
      return failure.Message();
    }
    return "";
  }

  CommandDesk desk_;
  std::function<ExitCode()> info_ = [] { return ExitCode::kDone; };
  std::vector<std::vector<std::string>> cameras_;
};

TEST_F(ScriptTest, EachLineStandsBeforeItsOutput) {
  EXPECT_EQ(Do("# remark\n\n  list \r\nlist b\n"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "> list\nlisted\n> list b\nlisted\n");
  EXPECT_EQ(desk_.result.dump(),
            R"({"commands":[{"line":3,"text":"list","exit":0,"result":{"cameras":[]}},)"
            R"({"line":4,"text":"list b","exit":0,"result":{"cameras":[]}}]})");
}

TEST_F(ScriptTest, CameraOfTheLineWinsOverThatOfTheScript) {
  desk_.common.cameras = {"outer"};
  Do("list\nlist own\n");
  EXPECT_EQ(cameras_, (std::vector<std::vector<std::string>>{{"outer"}, {"own"}}));
}

TEST_F(ScriptTest, AllLinesAreReadBeforeTheFirstIsRun) {
  EXPECT_EQ(FailureMessage("list\nlits\n"), "work.txt:2: lits is no command; nothing was run");
}

TEST_F(ScriptTest, EveryBadLineIsToldAtOnce) {
  EXPECT_EQ(FailureMessage("list\nlits\n# remark\ninfo --json\nrun x\n"),
            "work.txt: 3 problems, the first in work.txt:2: lits is no command; nothing was run");
  EXPECT_EQ(desk_.output.errors,
            "work.txt:2: lits is no command\n"
            "work.txt:4: --json applies to a whole script, not to a line\n"
            "work.txt:5: a script can't run another one\n");
  // A single problem is only in the failure's message.
  FailureMessage("lits\n");
  EXPECT_EQ(desk_.output.errors, "");
}

TEST_F(ScriptTest, EncodingIsReadAsThatOfLists) {
  EXPECT_EQ(Do("\xEF\xBB\xBFlist\r\nlist b\x1A\r\n"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "> list\nlisted\n> list b\nlisted\n");
  for (const std::string mark : {"\xFF\xFE", "\xFE\xFF"}) {
    EXPECT_EQ(FailureMessage(mark + std::string("l\0i\0s\0t\0", 8), ExitCode::kFile),
              "work.txt: the file is UTF-16, which can't be read: save it as plain text; nothing "
              "was run");
  }
  EXPECT_EQ(FailureMessage("list\x1A\ninfo\n", ExitCode::kFile),
            "work.txt:1: a byte 0x1a (Ctrl-Z) ends the script here, what follows would not be "
            "read; nothing was run");
}

TEST_F(ScriptTest, LineIsShownInOneRow) {
  Do("list\tb\n");
  EXPECT_EQ(desk_.output.out, "> list b\nlisted\n");
  EXPECT_EQ(desk_.result["commands"][0]["text"], "list\tb");
}

TEST_F(ScriptTest, OptionsOfTheWholeScriptAndScriptsWithinAreRefused) {
  EXPECT_EQ(FailureMessage("list --json\n"),
            "work.txt:1: --json applies to a whole script, not to a line; nothing was run");
  EXPECT_EQ(FailureMessage("run\n"), "work.txt:1: a script can't run another one; nothing was run");
}

TEST_F(ScriptTest, FirstFailureEndsTheScriptWithItsLine) {
  info_ = []() -> ExitCode {
    throw Failure(ExitCode::kDevice, "the camera is gone", "Look.\nAgain.");
  };
  EXPECT_EQ(Do("list\ninfo\nlist\n"), ExitCode::kDevice);
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: run: work.txt:2: the camera is gone\n  Look.\n  Again.\n");
  EXPECT_EQ(desk_.output.out, "> list\nlisted\n> info\n");
  EXPECT_EQ(desk_.result["commands"][1].dump(),
            R"({"line":2,"text":"info","exit":6,"error":{"code":6,"kind":"device",)"
            R"("message":"the camera is gone","hint":"Look.\nAgain."}})");
}

TEST_F(ScriptTest, OutcomeThatIsNotGoodEndsTheScriptToo) {
  info_ = [] { return ExitCode::kVerify; };
  EXPECT_EQ(Do("info\nlist\n"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.errors, "borvanusb: run: work.txt:1: ended with exit code 7 (verify)\n");
  EXPECT_EQ(desk_.result["commands"].size(), 1U);
}

TEST_F(ScriptTest, KeepGoingRunsAllAndEndsWithTheWorst) {
  int calls = 0;
  info_ = [&calls]() -> ExitCode {
    if (++calls == 1) {
      throw Failure(ExitCode::kTimeout, "nothing moves");
    }
    throw std::runtime_error("no memory");
  };
  EXPECT_EQ(Do("info\nlist\ninfo\nlist\n", true), ExitCode::kInternal);
  EXPECT_EQ(desk_.result["commands"].size(), 4U);
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: run: work.txt:1: nothing moves\nborvanusb: run: work.txt:3: no memory\n");
}

TEST_F(ScriptTest, LinesBehindLostOutputAreNotRun) {
  info_ = [this] {
    desk_.output.takes_results = false;
    return ExitCode::kDone;
  };
  EXPECT_EQ(Do("list\ninfo\n\nlist\n"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["commands"].size(), 2U);
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: run: work.txt:4: standard output can't be written; this line and the lines "
            "after it were not run\n");
  // With --keep-going, results are printed despite failures.
  desk_.output.takes_results = true;
  desk_.output.errors.clear();
  Do("info\nlist\n", true);
  EXPECT_EQ(desk_.result["commands"].size(), 2U);
  EXPECT_EQ(desk_.output.errors, "");
}

TEST_F(ScriptTest, StopByTheUserEndsItAlsoWhenKeepingOn) {
  info_ = []() -> ExitCode { throw Failure(ExitCode::kStopped, "stopped by the user"); };
  EXPECT_EQ(Do("info\nlist\n", true), ExitCode::kStopped);
  EXPECT_EQ(desk_.result["commands"].size(), 1U);
  // A line that ends normally after a stop, such as watching, is still the last one.
  info_ = [this] {
    desk_.host.stop_requested = true;
    return ExitCode::kDone;
  };
  EXPECT_EQ(Do("info\nlist\n", true), ExitCode::kStopped);
  EXPECT_EQ(desk_.result["commands"].size(), 1U);
}

}  // namespace
}  // namespace borvanusb::tool_test
