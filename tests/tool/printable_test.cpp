// How texts from outside are shown on a terminal.
#include "output/printable.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace borvanusb::tool_test {
namespace {

TEST(PrintableTest, WhatIsShownStaysAsItIs) {
  for (const std::string text :
       {"", "a ~ \"b\" \\", "Pr\303\274fkamera \xE2\x84\x96 \xE5\x89\x8D\xE7\xBD\xAE",
        "\xF0\x9F\x93\xB7", "\xC2\xA0\xC3\xBF", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_EQ(Printable(text), text);
  }
}

TEST(PrintableTest, ControlCharactersBecomeQuestionMarks) {
  EXPECT_EQ(Printable("x\r\nborvanusb: all is well\x1B[2J"), "x??borvanusb: all is well?[2J");
  EXPECT_EQ(Printable(std::string("a\0b\tc\x1F\x7F"
                                  "d",
                                  8)),
            "a?b?c??d");
  // C1 controls: the first, the last, and the sequence introducer.
  EXPECT_EQ(Printable("a\xC2\x80\xC2\x9B\xC2\x9F"
                      "b"),
            "a???b");
}

TEST(PrintableTest, OtherLineEndsAndTurnsOfDirectionBecomeQuestionMarks) {
  // U+2028, U+2029; U+202A to U+202E; U+2066 to U+2069.
  for (const std::string text : {"\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAA", "\xE2\x80\xAE",
                                 "\xE2\x81\xA6", "\xE2\x81\xA9"}) {
    EXPECT_EQ(Printable("a" + text + "b"), "a?b");
  }
  // Their neighbours, which are allowed.
  for (const std::string text : {"\xE2\x80\xA7", "\xE2\x80\xAF", "\xE2\x81\xA5", "\xE2\x81\xAA"}) {
    EXPECT_EQ(Printable(text), text);
  }
}

TEST(PrintableTest, BytesThatAreNoUtf8BecomeQuestionMarks) {
  EXPECT_EQ(Printable("a\x9B\xFF\x80z"), "a???z");
  // Truncated, an overlong form of a line feed, a surrogate, beyond the last character.
  EXPECT_EQ(Printable("\xE2\x80"), "??");
  EXPECT_EQ(Printable("\xC0\x8A"), "??");
  EXPECT_EQ(Printable("\xED\xA0\x80"), "???");
  EXPECT_EQ(Printable("\xED\xBF\xBF"), "???");  // the last surrogate
  EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "????");
  EXPECT_EQ(Printable("\xE2\x80"
                      "a\xC3\xBC"),
            "??a\xC3\xBC");
}

TEST(PrintableJsonTest, TextsKeepTheirValuesAndHoldNothingThatATerminalObeys) {
  const std::string name = "x\r\n\x1B[2J\x7F\xC2\x9B\xE2\x80\xA8\xE2\x80\xAE\xC3\xBC";
  const nlohmann::ordered_json json = {{"name", name}};
  const std::string text = PrintableJson(json.dump());
  EXPECT_EQ(text, "{\"name\":\"x\\r\\n\\u001b[2J\\u007f\\u009b\\u2028\\u202e\xC3\xBC\"}");
  EXPECT_EQ(nlohmann::ordered_json::parse(text), json);
  EXPECT_EQ(PrintableJson("{\n  \"a\": 1\n}"), "{\n  \"a\": 1\n}");
}

}  // namespace
}  // namespace borvanusb::tool_test
