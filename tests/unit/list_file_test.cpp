// Files of lists, as Windows reads text files.

#include "files/list_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "temporary_file.h"

namespace borvan {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<ListEntry> ListOf(const std::string& content) {
  const test::TemporaryFile file(".txt");
  file.Fill(content);
  return ReadListFile(file.Path());
}

TEST(ListFile, RemarkBlankAndDroppedLinesGiveNoEntry) {
  EXPECT_THAT(ListOf("// a remark\n"
                     "\n"
                     "0xFFF2, 0x01\n"
                     "0x3012, 0x5A\n"
                     "3013,5b\n"),
              ElementsAre(ListEntry{0x3012, 0x5A}, ListEntry{0x3013, 0x5B}));
}

TEST(ListFile, LinesEndInCrLfOrLf) {
  EXPECT_THAT(ListOf("1,2\r\n3,4\n5,6\r\n"),
              ElementsAre(ListEntry{1, 2}, ListEntry{3, 4}, ListEntry{5, 6}));
}

TEST(ListFile, ALoneCrEndsNoLine) {
  EXPECT_THAT(ListOf("1,2\r3,4\n"), ElementsAre(ListEntry{1, 2}));
}

TEST(ListFile, TheLastLineNeedsNoEnd) {
  EXPECT_THAT(ListOf("1,2\n3,4"), ElementsAre(ListEntry{1, 2}, ListEntry{3, 4}));
}

TEST(ListFile, Byte1AEndsTheFile) {
  EXPECT_THAT(ListOf("1,2\n3,4\x1A\n5,6\n"), ElementsAre(ListEntry{1, 2}, ListEntry{3, 4}));
  EXPECT_THAT(ListOf("\x1A"
                     "1,2\n"),
              IsEmpty());
}

TEST(ListFile, NulDoesNotEndALine) {
  EXPECT_THAT(ListOf(std::string("1\0"
                                 "9,2\n3,4\n",
                                 10)),
              ElementsAre(ListEntry{1, 2}, ListEntry{3, 4}));
}

TEST(ListFile, KeepsOrderAndRepetitions) {
  EXPECT_THAT(ListOf("3,1\n1,1\n3,1\n"),
              ElementsAre(ListEntry{3, 1}, ListEntry{1, 1}, ListEntry{3, 1}));
}

TEST(ListFile, WithoutALineWithEntriesIsAnEmptyList) {
  EXPECT_THAT(ListOf(""), IsEmpty());
  EXPECT_THAT(ListOf("// nothing\n\n"), IsEmpty());
}

TEST(ListFile, ThatCannotBeOpenedIsAnEmptyList) {
  const test::TemporaryFile file(".txt");
  EXPECT_THAT(ReadListFile(file.Path()), IsEmpty());
  EXPECT_THAT(ReadListFile(""), IsEmpty());
}

TEST(ListFile, LineWithAnAddressAloneRaises) {
  EXPECT_THROW(ListOf("1,2\n3,\n5,6\n"), std::invalid_argument);
}

TEST(ListFile, LinesLongerThanAnyBufferAreWhole) {
  const std::string blanks(200000, ' ');
  EXPECT_THAT(ListOf("1," + blanks + "2\n" + blanks + "3,4" + blanks + "\n5,6\n"),
              ElementsAre(ListEntry{1, 2}, ListEntry{3, 4}, ListEntry{5, 6}));
}

TEST(ListFile, ManyLinesAreAllRead) {
  std::string content;
  for (int line = 0; line < 20000; ++line) {
    content += "0x3012, 0x5a,\r\n";
  }
  const std::vector<ListEntry> list = ListOf(content);
  ASSERT_EQ(list.size(), 20000U);
  for (const ListEntry& entry : list) {
    ASSERT_EQ(entry, (ListEntry{0x3012, 0x5A}));
  }
}

}  // namespace
}  // namespace borvan
