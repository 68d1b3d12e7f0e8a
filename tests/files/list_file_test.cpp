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

 public:
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

TEST_F(ListFileTest, LineOfOneFieldIsAnInvalidArgument) {
  EXPECT_THROW(Read("1,2\n3,\n5,6\n"), std::invalid_argument);
  EXPECT_THROW(Read("3,\x1A"), std::invalid_argument);
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

}  // namespace
}  // namespace borvan_test
