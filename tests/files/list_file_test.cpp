// Register and I2C list files.

#include "files/list_file.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Entries = std::vector<borvan::ListEntry>;

class ListFileTest : public testing::Test {
 protected:
  Entries Read(std::string_view content) const {
    return borvan::ReadListFile(folder.Put("list.txt", content));
  }

  const TemporaryFolder folder;
};

TEST_F(ListFileTest, FiveLinesOfEveryKindReadAsTwoEntries) {
  EXPECT_EQ(Read("// head\n"
                 "\n"
                 "0xFFF2, 0x01\n"
                 "0x3012, 0x5A\n"
                 "3013,5b\n"),
            (Entries{{0x3012, 0x5A}, {0x3013, 0x5B}}));
  EXPECT_EQ(Read("// head\r\n"
                 "\r\n"
                 "0xFFF2, 0x01,\r\n"
                 "0x3012, 0x5A,\r\n"
                 "3013,5b,\r\n"),
            (Entries{{0x3012, 0x5A}, {0x3013, 0x5B}}));
}

TEST_F(ListFileTest, FileWithoutEntriesIsAnEmptyList) {
  EXPECT_EQ(Read(""), Entries{});
  EXPECT_EQ(Read("\n\n\r\n   \t \n"), Entries{});
  EXPECT_EQ(Read("// 0x01,0x02,\n"), Entries{});
}

TEST_F(ListFileTest, LongListTakesTheMemoryOfItsEntriesAndNoMore) {
  constexpr std::size_t kLines = 60000;
  std::string content;
  for (std::size_t i = 0; i < kLines; ++i) {
    content += "0x3012,0x5a,\n";
  }
  const Entries list = Read(content);
  EXPECT_EQ(list.size(), kLines);
  EXPECT_EQ(list.capacity(), kLines);
}

TEST_F(ListFileTest, FileThatCannotBeOpenedIsAnEmptyList) {
  EXPECT_EQ(borvan::ReadListFile(folder.Path("missing.txt")), Entries{});
  EXPECT_EQ(borvan::ReadListFile(folder.Path("no folder/list.txt")), Entries{});
  EXPECT_EQ(borvan::ReadListFile(""), Entries{});
}

TEST_F(ListFileTest, NameWithANulInsideOpensNoOtherFile) {
  const std::string path = folder.Put("list.txt", "1,2\n");
  EXPECT_EQ(borvan::ReadListFile(path + std::string("\0.bak", 5)), Entries{});
}

TEST_F(ListFileTest, NonAsciiNameIsOpened) {
  const std::string path = folder.Put("r\xC3\xA9glages \xE8\xA1\xA8.txt", "1,2\n");
  EXPECT_EQ(borvan::ReadListFile(path), (Entries{{1, 2}}));
}

TEST_F(ListFileTest, LinesEndInLineFeedWithOrWithoutCarriageReturn) {
  EXPECT_EQ(Read("1,2\r\n3,4\n5,6\r\n"), (Entries{{1, 2}, {3, 4}, {5, 6}}));
}

TEST_F(ListFileTest, LastLineNeedsNoEnd) {
  EXPECT_EQ(Read("1,2\n3,4"), (Entries{{1, 2}, {3, 4}}));
  EXPECT_EQ(Read("1,2\r\n3,4,"), (Entries{{1, 2}, {3, 4}}));
}

TEST_F(ListFileTest, LoneCarriageReturnIsWhiteSpace) {
  EXPECT_EQ(Read("0x10,\r0x20,\n"), (Entries{{0x10, 0x20}}));
  EXPECT_EQ(Read("\r0x10,0x20\r\r\n"), (Entries{{0x10, 0x20}}));
  // Fields "1", "2 3" and "4": no end of line between them.
  EXPECT_EQ(Read("1,2\r3,4\n"), (Entries{{1, 2}}));
}

TEST_F(ListFileTest, ControlZEndsTheFile) {
  EXPECT_EQ(Read("1,2\n3,4\x1A\n5,6\n"), (Entries{{1, 2}, {3, 4}}));
  EXPECT_EQ(Read("1,2\n\x1A"
                 "3,4\n"),
            (Entries{{1, 2}}));
  EXPECT_EQ(Read("\x1A"
                 "1,2\n"),
            Entries{});
}

TEST_F(ListFileTest, NulByteEndsANumberAndNoLine) {
  EXPECT_EQ(Read(std::string_view("12\0"
                                  "34,5\n6,7\n",
                                  11)),
            (Entries{{0x12, 5}, {6, 7}}));
  EXPECT_EQ(Read(std::string_view("1,2\0"
                                  "3,\n4,5\n",
                                  11)),
            (Entries{{1, 2}, {4, 5}}));
}

TEST_F(ListFileTest, BlankBeforeTheCommaIsTrimmed) {
  EXPECT_EQ(Read("0x10 ,0x20\n"), (Entries{{0x10, 0x20}}));
}

TEST_F(ListFileTest, FieldsAreTrimmed) {
  EXPECT_EQ(Read(" \t 0x10 \t,\v\f 0x20 \t, \n"), (Entries{{0x10, 0x20}}));
}

TEST_F(ListFileTest, WhiteSpaceIsAsciiOnly) {
  // A no-break space of a Windows code page is no digit and no blank.
  EXPECT_EQ(Read("\xA0"
                 "1,2\n"),
            (Entries{{0, 2}}));
}

TEST_F(ListFileTest, RemarkWithoutACommaIsSkipped) {
  EXPECT_EQ(Read("// gain\n//\n1,2\n"), (Entries{{1, 2}}));
  EXPECT_EQ(Read("gain\n1,2\n"), (Entries{{1, 2}}));
}

TEST_F(ListFileTest, DoubleSlashBehindLeadingBlanksMakesARemark) {
  EXPECT_EQ(Read("   // 1,2\n\t//3,4\n"), Entries{});
}

TEST_F(ListFileTest, OnlyALeadingDoubleSlashMakesARemark) {
  EXPECT_EQ(Read("1,2 // two\n3,4, // four, or so\n"), (Entries{{1, 2}, {3, 4}}));
  EXPECT_EQ(Read("/ /1,2\n"), (Entries{{0, 2}}));
}

TEST_F(ListFileTest, LineWithoutACommaIsSkipped) {
  EXPECT_EQ(Read("0x3012 0x5a\nhello\n1,2\n"), (Entries{{1, 2}}));
}

TEST_F(ListFileTest, DroppedAddressIsComparedInAnyCase) {
  EXPECT_EQ(Read("0xfff2,1\n0XFFF2,1\n0xFfF2,1\n  0xfff2,1\n0xfff2,\n"), Entries{});
}

TEST_F(ListFileTest, DroppedAddressIsComparedAsItStands) {
  EXPECT_EQ(Read("0xfff2 ,1\n"), (Entries{{0xFFF2, 1}}));
  EXPECT_EQ(Read("fff2,1\n"), (Entries{{0xFFF2, 1}}));
  EXPECT_EQ(Read("0x0fff2,1\n"), (Entries{{0xFFF2, 1}}));
  EXPECT_EQ(Read("0xfff20,1\n"), (Entries{{0xFFF20, 1}}));
}

TEST_F(ListFileTest, NumbersAreHexadecimalInAnyCase) {
  EXPECT_EQ(Read("0xAbCd,eF\n10,10\n"), (Entries{{0xABCD, 0xEF}, {0x10, 0x10}}));
}

TEST_F(ListFileTest, WhatStandsBeforeThePrefixIsDroppedFromFieldsBeforeAComma) {
  EXPECT_EQ(Read("reg 0x3012,val=0x5a,\n"), (Entries{{0x3012, 0x5A}}));
  EXPECT_EQ(Read("0x0x12,0x0x34,\n"), (Entries{{0x12, 0x34}}));
  // A byte-order mark of UTF-8.
  EXPECT_EQ(Read("\xEF\xBB\xBF"
                 "0x3012,0x5a,\n"),
            (Entries{{0x3012, 0x5A}}));
}

TEST_F(ListFileTest, LastFieldKeepsWhatStandsBeforeThePrefix) {
  EXPECT_EQ(Read("1,0x5a\n"), (Entries{{1, 0x5A}}));
  EXPECT_EQ(Read("1,val=0x5a\n"), (Entries{{1, 0}}));
}

TEST_F(ListFileTest, PrefixInCapitalsIsLeftToTheConversion) {
  EXPECT_EQ(Read("0X3012,0X5A,\n"), (Entries{{0x3012, 0x5A}}));
  EXPECT_EQ(Read("reg 0X3012,0X5A,\n"), (Entries{{0, 0x5A}}));
}

TEST_F(ListFileTest, ConversionStopsAtTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(Read("3012h,5a remark\n"), (Entries{{0x3012, 0x5A}}));
  EXPECT_EQ(Read("xyz,remark\n"), (Entries{{0, 0}}));
}

TEST_F(ListFileTest, NumbersBeyond32BitsGiveTheLargest) {
  EXPECT_EQ(Read("0xffffffff,0x100000000\n"), (Entries{{0xFFFFFFFF, 0xFFFFFFFF}}));
  EXPECT_EQ(Read("123456789abcdef0123,1\n"), (Entries{{0xFFFFFFFF, 1}}));
}

TEST_F(ListFileTest, SignsAreReadAsTheConversionReadsThem) {
  EXPECT_EQ(Read("-1,+5\n"), (Entries{{0xFFFFFFFF, 5}}));
  // The largest number, negated.
  EXPECT_EQ(Read("-100000000,1\n"), (Entries{{1, 1}}));
}

TEST_F(ListFileTest, FieldsAfterTheSecondAreIgnored) {
  EXPECT_EQ(Read("1,2,3,4,5\n"), (Entries{{1, 2}}));
}

TEST_F(ListFileTest, EmptyFieldsBeforeACommaReadAsZero) {
  EXPECT_EQ(Read(",5\n"), (Entries{{0, 5}}));
  EXPECT_EQ(Read(",,\n"), (Entries{{0, 0}}));
  EXPECT_EQ(Read("5,,\n"), (Entries{{5, 0}}));
  EXPECT_EQ(Read("5, ,\n"), (Entries{{5, 0}}));
}

TEST_F(ListFileTest, LineOfOneFieldIsAnInvalidArgument) {
  for (const char* line : {"0x3012,\n", "0x3012,", "0x3012,  \t\r\n", ",\n", " , \n", "3,\x1A"}) {
    EXPECT_THROW(Read(line), std::invalid_argument) << line;
  }
  EXPECT_THROW(Read("1,2\n3,\n5,6\n"), std::invalid_argument);
}

TEST_F(ListFileTest, LongLinesAreReadWhole) {
  const std::string blanks(200000, ' ');
  EXPECT_EQ(Read(blanks + "0x12" + blanks + "," + blanks + "0x34,\n1,2\n"),
            (Entries{{0x12, 0x34}, {1, 2}}));
  EXPECT_EQ(Read("1," + std::string(100000, '0') + "7\n"), (Entries{{1, 7}}));
}

TEST_F(ListFileTest, LongFilesKeepTheirOrder) {
  std::string content;
  Entries expected;
  for (std::uint32_t i = 0; i < 20000;
       ++i) {  // lines of 11 bytes: they straddle every power of two
    const char digits[] = "0123456789abcdef";
    content += {'0',
                'x',
                digits[i >> 12U & 15U],
                digits[i >> 8U & 15U],
                digits[i >> 4U & 15U],
                digits[i & 15U],
                ',',
                '5',
                ',',
                '\r',
                '\n'};
    expected.push_back({i, 5});
  }
  EXPECT_EQ(Read(content), expected);
}

TEST_F(ListFileTest, OneLineAlone) {
  EXPECT_EQ(borvan::ParseListLine("0x3012, 0x5a,"), (borvan::ListEntry{0x3012, 0x5A}));
  EXPECT_EQ(borvan::ParseListLine(""), std::nullopt);
  EXPECT_EQ(borvan::ParseListLine("// 1,2"), std::nullopt);
  EXPECT_EQ(borvan::ParseListLine("0xfff2,1"), std::nullopt);
  EXPECT_EQ(borvan::ParseListLine("no comma"), std::nullopt);
  EXPECT_THROW(static_cast<void>(borvan::ParseListLine("1,")), std::invalid_argument);
}

}  // namespace
}  // namespace borvan_test
