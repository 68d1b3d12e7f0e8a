// Strict parsing of list files.
#include "registers/list_text.h"

#include <gtest/gtest.h>

#include <string>

namespace borvanusb::tool_test {
namespace {

using Entries = std::vector<ListEntry>;

// The only problem of a text, as "LINE: TEXT"; otherwise "none" or "several".
std::string TheProblem(const std::string& text) {
  const ListText list = ReadListText(text);
  if (list.problems.size() != 1) {
    return list.problems.empty() ? "none" : "several";
  }
  return std::to_string(list.problems[0].line) + ": " + list.problems[0].text;
}

TEST(ListTextTest, LinesAreAnAddressAndAValueInHexadecimal) {
  const ListText list = ReadListText(
      "// A remark, with a comma.\n"
      "0x3012, 0x5a,\r\n"
      "\r\n"
      "3013,5B\n"
      "\t 0X3014 ,10,  // behind the second comma nothing counts, 0x77 or not\n"
      "0x3015,0x06 // gain, old 6");
  EXPECT_EQ(list.entries,
            (Entries{{0x3012, 0x5A, 2}, {0x3013, 0x5B, 4}, {0x3014, 0x10, 5}, {0x3015, 6, 6}}));
  EXPECT_TRUE(list.problems.empty());
  EXPECT_TRUE(list.remarks.empty());
}

TEST(ListTextTest, LineThatTheLibraryWouldPassOverIsAProblem) {
  EXPECT_EQ(TheProblem("0x1,2,\nExposure\n"),
            "2: no comma in \"Exposure\": the line would be ignored; write ADDRESS, VALUE, or "
            "begin a comment with //");
}

TEST(ListTextTest, OneFieldIsAProblem) {
  for (const char* line : {"0x3012,", "0x3012, ", "0x3012,,", "0x3012,// none"}) {
    EXPECT_EQ(TheProblem(line),
              "1: no value after the address: such a line makes the whole list invalid")
        << line;
  }
}

TEST(ListTextTest, WhatIsNoHexadecimalNumberIsAProblem) {
  EXPECT_EQ(TheProblem("Exposure, 0x10"),
            "1: address \"Exposure\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("reg 0x3012, 0x10"),
            "1: address \"reg 0x3012\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, 0x"), "1: value \"0x\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, 0xzz,"), "1: value \"0xzz\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, 5a;"), "1: value \"5a;\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, -1,"), "1: value \"-1\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, 0x-1,"), "1: value \"0x-1\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem("0x10, 123456789,"), "1: value \"123456789\" has more than 32 bits");
}

TEST(ListTextTest, RemarkThatWouldBeReadAsTheValueIsAProblem) {
  EXPECT_EQ(TheProblem("0x0a,5a // was 0x10, once"),
            "1: a comment after the value would be read as the value: put a comma before the //");
  EXPECT_EQ(TheProblem("0x0a,0x5a // was 0x10, once"), "none");
  EXPECT_EQ(TheProblem("0x0a,5a // was 0x10"), "none");
}

TEST(ListTextTest, ThirdNumberIsARemark) {
  const ListText list = ReadListText("0x10, 0x20, 0x30,");
  EXPECT_EQ(list.entries, (Entries{{0x10, 0x20, 1}}));
  EXPECT_EQ(list.remarks, (std::vector<ListProblem>{
                              {1, "nothing after the second comma is read: \"0x30\" is ignored"}}));
}

TEST(ListTextTest, DroppedAddressCountsOnlyAsTheLibraryKnowsIt) {
  const ListText list = ReadListText("0xFFF2,1,\n0x10,2,");
  EXPECT_EQ(list.entries, (Entries{{0x10, 2, 2}}));
  EXPECT_EQ(list.remarks,
            (std::vector<ListProblem>{{1, "lines with 0xfff2 are ignored, this one too"}}));
  for (const char* line : {"0xfff2 ,1,", "fff2,1,", "0XFFF2,1,", "0x0fff2,1"}) {
    EXPECT_EQ(ReadListText(line).problems.size(), 1U) << line;
  }
}

TEST(ListTextTest, EndOfFileByteEndsTheListAndHidesNothing) {
  EXPECT_EQ(TheProblem("0x10,2,\n\x1A\r\n"), "none");
  const ListText list = ReadListText("0x10,2,\n0x11,3,\x1A\n0x12,4,\n");
  EXPECT_EQ(list.entries, (Entries{{0x10, 2, 1}, {0x11, 3, 2}}));
  EXPECT_EQ(list.problems,
            (std::vector<ListProblem>{
                {2, "a byte 0x1a (Ctrl-Z) ends the list here, what follows would not be read"}}));
}

TEST(ListTextTest, Utf8MarkIsPassedOverAndUtf16Refused) {
  EXPECT_EQ(ReadListText("\xEF\xBB\xBF"
                         "10,2")
                .entries,
            (Entries{{0x10, 2, 1}}));
  EXPECT_EQ(TheProblem(std::string("\xFF\xFE"
                                   "0\0",
                                   4)),
            "0: the file is UTF-16, which can't be read: save it as plain text");
}

TEST(ListTextTest, QuotesShowNoBytesThatTerminalsTake) {
  EXPECT_EQ(TheProblem("\x1B[2J\xE4,1"), "1: address \"?[2J?\" is not a valid hexadecimal number");
  EXPECT_EQ(TheProblem(std::string(50, 'x') + ",1"),
            "1: address \"" + std::string(40, 'x') + "...\" is not a valid hexadecimal number");
}

}  // namespace
}  // namespace borvanusb::tool_test
