// How the example program_flash reads and compares a dump.
#include "flash_dump.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(DumpName, IsTextByTheExactEndingOnly) {
  EXPECT_TRUE(IsTextDump("dump.txt"));
  EXPECT_TRUE(IsTextDump("a.b.txt"));
  EXPECT_TRUE(IsTextDump("txt"));  // without a dot the whole name is taken
  EXPECT_FALSE(IsTextDump("dump.TXT"));
  EXPECT_FALSE(IsTextDump("dump.txt.bin"));
  EXPECT_FALSE(IsTextDump("dump."));
  EXPECT_FALSE(IsTextDump(""));
}

TEST(DumpLength, IsThatOfTheBytesOrOfWholeLines) {
  EXPECT_EQ(9U, DumpFileLength(false, 9));
  EXPECT_EQ(37U, DumpFileLength(true, 1));
  EXPECT_EQ(37U, DumpFileLength(true, 8));
  EXPECT_EQ(74U, DumpFileLength(true, 9));
  EXPECT_EQ(19864223744U, DumpFileLength(true, 0xFFFFFFFF)) << "beyond 32 bits";
}

TEST(TextDump, GivesItsBytesWithoutTheLastLinesFilling) {
  const std::string content =
      "00001000h: 00 01 02 03 04 05 06 07;\r\n"
      "00001008h: f8 ff 00 00 00 00 00 00;\r\n";
  EXPECT_EQ((Bytes{0, 1, 2, 3, 4, 5, 6, 7, 0xF8, 0xFF}), ParseTextDump(content, 0x1000, 10));
}

TEST(TextDump, OfAnotherAddressIsRefused) {
  const std::string content = "00001000h: 00 01 02 03 04 05 06 07;\r\n";
  EXPECT_EQ(std::nullopt, ParseTextDump(content, 0x2000, 8));
}

TEST(TextDump, OfAnotherLengthIsRefused) {
  const std::string content = "00001000h: 00 01 02 03 04 05 06 07;\r\n";
  EXPECT_EQ(std::nullopt, ParseTextDump(content, 0x1000, 9));
  EXPECT_EQ(std::nullopt, ParseTextDump(content.substr(0, 36), 0x1000, 8));
  EXPECT_EQ(std::nullopt, ParseTextDump("", 0x1000, 8));
}

TEST(TextDump, OfAnotherFormIsRefused) {
  for (const char* content : {
           "00001000h: 00 01 02 03 04 05 06 0g;\r\n",  // no hexadecimal digit
           "00001000h: 00 01 02 03 04 05 06 -7;\r\n",  // a sign
           "00001000h: 00 01 02 03 04 05 06 07,\r\n",  // another end
           "00001000x: 00 01 02 03 04 05 06 07;\r\n",  // another mark
           "00001000h: 00 01 02 03 04 05 06 07;\n\n",  // no carriage return
       }) {
    EXPECT_EQ(std::nullopt, ParseTextDump(content, 0x1000, 8)) << content;
  }
}

TEST(FirstDifference, IsNothingBetweenEquals) {
  EXPECT_EQ(std::nullopt, FirstDifference({1, 2, 3}, {1, 2, 3}));
  EXPECT_EQ(std::nullopt, FirstDifference({}, {}));
}

TEST(FirstDifference, IsTheFirstOfSeveral) {
  EXPECT_EQ(1U, FirstDifference({1, 2, 3}, {1, 9, 9}));
}

TEST(FirstDifference, IsTheEndOfTheShorterOne) {
  EXPECT_EQ(2U, FirstDifference({1, 2}, {1, 2, 3}));
  EXPECT_EQ(2U, FirstDifference({1, 2, 3}, {1, 2}));
  EXPECT_EQ(0U, FirstDifference({}, {1}));
}

}  // namespace
