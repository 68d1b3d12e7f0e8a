// The trace file and its reader.
#include "core/trace.h"

#include <sstream>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class TraceTest : public DeviceTest {
 protected:
  TraceTest() {
    configuration.path = "virtual";
    configuration.trace_file = folder.File("trace.jsonl");
  }
  std::vector<std::string> Lines() const {
    std::istringstream stream(folder.Read("trace.jsonl"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }
  static std::string Printed(const std::string& trace) {
    std::istringstream input(trace);
    std::ostringstream output;
    virtual_camera::PrintTrace(input, output);
    return output.str();
  }
  // A trace line of a camera "a" at noon.
  static std::string Line(const std::string& direction, int selector, const std::string& bytes,
                          const std::string& result = "0x00000000") {
    return R"({"time":"2026-01-31T12:00:00.000000Z","camera":"a","direction":")" + direction +
           R"(","selector":)" + std::to_string(selector) + R"(,"length":)" +
           std::to_string(bytes.size() / 2) + R"(,"bytes":")" + bytes + R"(","result":")" + result +
           "\"}\n";
  }
};

TEST_F(TraceTest, ProcessMayHaveATraceOfItsOwnBesideTheConfiguredOne) {
  configuration.process_trace_file = folder.File("process.jsonl");
  camera().QueryLength(1);
  EXPECT_EQ(Lines().size(), 1U);
  EXPECT_EQ(folder.Read("process.jsonl"), folder.Read("trace.jsonl"));
}

TEST_F(TraceTest, EveryTransferIsALine) {
  camera().QueryLength(1);
  Set(1, {0x24, 0xA3, 0x01, 0x18});
  Set(1, {0x99, 0x00, 0x00, 0x00});
  Bytes reply(6);
  camera().Get(1, reply);
  const std::vector<std::string> lines = Lines();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_THAT(lines[0], MatchesRegex("\\{\"time\":\"....-..-..T..:..:..\\.......Z\",.*"));
  const auto after_time = [&](std::size_t i) { return lines[i].substr(lines[i].find(",") + 1); };
  EXPECT_EQ(after_time(0),
            R"("camera":"virtual","direction":"length","selector":1,"length":4,"bytes":"",)"
            R"("result":"0x800700ea"})");
  EXPECT_EQ(after_time(1),
            R"("camera":"virtual","direction":"set","selector":1,"length":4,"bytes":"24a30118",)"
            R"("result":"0x00000000"})");
  EXPECT_EQ(after_time(2),
            R"("camera":"virtual","direction":"set","selector":1,"length":4,"bytes":"99000000",)"
            R"("result":"0x8007001f"})");
  EXPECT_EQ(after_time(3),
            R"("camera":"virtual","direction":"get","selector":1,"length":6,"bytes":"00000000",)"
            R"("result":"0x00000000"})");
}

TEST_F(TraceTest, TraceGoesOnWhereItEnded) {
  camera().QueryLength(1);
  CloseCamera();
  camera().QueryLength(2);
  EXPECT_EQ(Lines().size(), 2U);
}

TEST_F(TraceTest, RepliesOverI2cAndUnknownBlocksArePrinted) {
  // The last four bytes of a reply are the value, high byte first.
  const std::string text = Printed(Line("set", 2, "016c01000000300a00000000") +
                                   Line("get", 2, "016c01000000300a00000056") +
                                   Line("set", 7, "0002000000000000" + std::string(112, '0')));
  EXPECT_THAT(text, testing::HasSubstr("reply: value = 0x56\n"));
  EXPECT_THAT(text, testing::HasSubstr("set     7  unknown"));
}

TEST_F(TraceTest, TransfersArePrintedInWordsWithASummary) {
  const std::string trace = Line("length", 1, "", "0x800700ea") +  //
                            Line("set", 1, "24a30118") +
                            Line("set", 1, "24000058") +                // feature register
                            Line("get", 1, "24200028") +                //
                            Line("set", 3, "3200001000000000000000") +  // erase at 0x1000
                            Line("set", 4, "00001000" + std::string(120, '5'), "0x80070017") +
                            Line("set", 9, "00", "0x80070490");
  EXPECT_EQ(
      Printed(trace),
      "camera a\n"
      "2026-01-31T12:00:00.000000Z  length  1  length query: 0 bytes\n"
      "2026-01-31T12:00:00.000000Z  set     1  register byte read: address bits 0 to 15 = 0x01a3\n"
      "2026-01-31T12:00:00.000000Z  set     1  feature register read: address bits 16 to 31 = "
      "0x0000, go\n"
      "2026-01-31T12:00:00.000000Z  get     1  feature register read: reply: value = 0x20\n"
      "2026-01-31T12:00:00.000000Z  set     3  flash erase: sector of address 0x00001000\n"
      "2026-01-31T12:00:00.000000Z  set     4  flash program packet: 60 bytes at 0x00001000  "
      "[failed 0x80070017]\n"
      "2026-01-31T12:00:00.000000Z  set     9  unknown selector  [failed 0x80070490]\n"
      "\n"
      "selector  purpose                   transfers  failed       bytes\n"
      "-----------------------------------------------------------------\n"
      "       1  feature register read             3       0          12\n"
      "       1  length query                      1       0           0\n"
      "       3  flash erase                       1       0          11\n"
      "       4  flash program packet              1       1          64\n"
      "       9  unknown selector                  1       1           1\n"
      "-----------------------------------------------------------------\n"
      "          all                               7       2          88\n");
}

TEST_F(TraceTest, EveryBlockHasItsWords) {
  const std::string zeros(200, '0');
  const auto block = [&](const std::string& head) {
    return head + zeros.substr(0, 128 - head.size());
  };
  const std::vector<std::pair<std::string, std::string>> cases = {
      {Line("set", 1, "12443300"), "register wide write: value bits 0 to 15 = 0x3344"},
      {Line("set", 1, "22221100"), "register wide write: value bits 16 to 31 = 0x1122"},
      {Line("set", 1, "42341200"), "register wide write: address bits 0 to 15 = 0x1234"},
      {Line("set", 1, "82008000"), "register wide write: address bits 16 to 31 = 0x8000, go"},
      {Line("set", 1, "41341200"), "register wide read: address bits 0 to 15 = 0x1234"},
      {Line("set", 1, "81008000"), "register wide read: address bits 16 to 31 = 0x8000, go"},
      {Line("set", 1, "28cdab08"), "register byte write: address bits 0 to 15 = 0xabcd"},
      {Line("set", 1, "28000038"), "register byte write: address bits 16 to 31 = 0x0000"},
      {Line("set", 1, "285a0048"), "register byte write: value = 0x5a, go"},
      {Line("set", 1, "24cdab18"), "register byte read: address bits 0 to 15 = 0xabcd"},
      {Line("set", 1, "24000058"), "register byte read: address bits 16 to 31 = 0x0000, go"},
      {Line("set", 1, "2400"), "unknown block: shorter than its command"},
      {Line("set", 1, "99000000"), "unknown block: no block that the chip knows"},
      {Line("set", 2, "006c03020000123400 00abcd"), "line 1: not a line of a trace"},
      {Line("set", 2, "006c0302000012340000abcd"),
       "I2C write: slave 0x6c, width mode 2, option 0x03, register 0x1234 = 0xabcd"},
      {Line("set", 2, "016c00010000301200000000"),
       "I2C read: slave 0x6c, width mode 1, option 0x00, register 0x3012"},
      {Line("set", 2, "14360201"), "I2C step read: slave 0x36, width mode 2"},
      {Line("set", 2, "14341202"), "I2C step read: register 0x1234"},
      {Line("set", 2, "18cdab04"), "I2C step write: value 0xabcd"},
      {Line("set", 3, "3800001000010203040000"), "flash word write: address 0x00001000 = 01020304"},
      {Line("set", 3, "3400001000000000000000"), "flash word read: address 0x00001000"},
      {Line("get", 3, "3400001000deadbeef0000"), "get without a command: reply: bytes deadbeef"},
      {Line("set", 5, block("00001000")), "flash fast read: 64 bytes from 0x00001000"},
      {Line("set", 6, block("1036013800001038")),
       "I2C block read: slave 0x36, width code 1, 56 values from 0x1038"},
      {Line("set", 6, block("00363203ffff3000")),
       "I2C run write: slave 0x36, width mode 2, option 3, 3 values from 0x3000"},
      {Line("set", 6, block("01363002")),
       "I2C scatter write: slave 0x36, width mode 0, option 3, 2 records"},
      {Line("set", 7, block("0100003880120038")), "register block read: 56 values from 0x80120038"},
      {Line("set", 7, block("00000115050601ff")),
       "register run write: 21 values from 0x01ff, header 1, 5, 6"},
      {Line("set", 7, block("00010112fffd05fffe06")),
       "register scatter write: 18 records, header 1, 5, 6"},
  };
  for (const auto& [line, expected] : cases) {
    EXPECT_THAT(Printed(line), HasSubstr(expected + "\n")) << line;
  }
}

TEST_F(TraceTest, ByteReadBesideTheFeatureRegisterIsCountedAsSuch) {
  const std::string printed =
      Printed(Line("set", 1, "24a30118") + Line("set", 1, "24010058") + Line("set", 1, "24a30118"));
  EXPECT_THAT(printed, HasSubstr("       1  register byte read                3       0"));
  EXPECT_THAT(printed, testing::Not(HasSubstr("feature")));
}

TEST_F(TraceTest, PositiveAnswersAreShown) {
  EXPECT_THAT(Printed(Line("set", 4, std::string(128, '0'), "0x00000001")),
              HasSubstr("60 bytes at 0x00000000  [answered 0x00000001]\n"));
}

TEST_F(TraceTest, LinesThatAreNoneAreNamedAndPassedOver) {
  const std::string printed =
      Printed("\n{\"time\":\nnonsense\n" + Line("length", 1, "") + "{\"time\":1,\"camera\":2}\n");
  EXPECT_THAT(printed, HasSubstr("line 2: not a line of a trace\n"));
  EXPECT_THAT(printed, HasSubstr("line 3: not a line of a trace\n"));
  EXPECT_THAT(printed, HasSubstr("line 5: not a line of a trace\n"));
  EXPECT_THAT(printed, HasSubstr("length query"));
}

TEST_F(TraceTest, InputWithoutAnyLineOfATraceIsNone) {
  const auto is_trace = [](const std::string& text) {
    std::istringstream input(text);
    std::ostringstream output;
    return virtual_camera::PrintTrace(input, output);
  };
  EXPECT_FALSE(is_trace("nonsense\n"));
  EXPECT_TRUE(is_trace(""));
  EXPECT_TRUE(is_trace("nonsense\n" + Line("length", 1, "")));
}

TEST_F(TraceTest, ControlCharactersOfATraceAreSpelledOut) {
  std::string line = Line("length", 1, "", "0x800700ea");
  line.replace(line.find("\"a\""), 3, R"("a\u001b[2J")");
  line.replace(line.find("2026-01-31"), 10, R"(\n2026)");
  EXPECT_THAT(Printed(line), HasSubstr("camera a\\u001b[2J\n"
                                       "\\u000a2026T12:00:00.000000Z  length  1  length query"));
}

TEST_F(TraceTest, CamerasOfOneTraceAreUnderstoodApart) {
  std::string other = Line("set", 1, "24000058");
  other.replace(other.find("\"a\""), 3, "\"b\"");
  EXPECT_THAT(Printed(Line("set", 1, "24a30118") + other),
              HasSubstr("camera b\n2026-01-31T12:00:00.000000Z  set     1  register byte read"));
}

}  // namespace
}  // namespace virtual_camera_test
