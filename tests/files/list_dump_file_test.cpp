// Runs of registers in files: lines that the list reader reads back, or raw values.

#include "files/list_dump_file.h"

#include <gtest/gtest.h>

#include "files/list_file.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Entries = std::vector<borvan::ListEntry>;

std::string RegisterLine(std::uint32_t address, std::uint32_t value) {
  std::string text;
  borvan::AppendRegisterLine(text, {address, value});
  return text;
}

std::string I2cLine(std::uint32_t address, std::uint32_t value, std::uint32_t mode) {
  std::string text;
  borvan::AppendI2cLine(text, {address, value}, mode);
  return text;
}

class ListDumpFileTest : public testing::Test {
 protected:
  // What `write` leaves in a file.
  template <typename Write>
  std::string Written(Write write) const {
    auto file = borvan::File::OpenToWrite(folder.Path("list.out"));
    EXPECT_TRUE(file.has_value());
    write(*file);
    file.reset();
    return folder.Content("list.out");
  }

 public:
  const TemporaryFolder folder;
};

TEST_F(ListDumpFileTest, RegisterLinesHaveABlankBehindTheFirstComma) {
  EXPECT_EQ(RegisterLine(0x3012, 0x5A), "0x3012, 0x5a,\r\n");
}

TEST_F(ListDumpFileTest, I2cLinesHaveNoBlank) {
  EXPECT_EQ(I2cLine(0x3012, 0x5A, 1), "0x3012,0x5a,\r\n");
}

TEST_F(ListDumpFileTest, ShortNumbersAreFilledUpWithZeros) {
  EXPECT_EQ(RegisterLine(0, 0), "0x0000, 0x00,\r\n");
  EXPECT_EQ(RegisterLine(0xA, 0xF), "0x000a, 0x0f,\r\n");
  EXPECT_EQ(I2cLine(0, 0, 0), "0x0000,0x00,\r\n");
  EXPECT_EQ(I2cLine(0xAB, 0xF, 2), "0x00ab,0x000f,\r\n");
}

TEST_F(ListDumpFileTest, AddressAboveFFFFPrintsWithMoreThanFourDigits) {
  EXPECT_EQ(RegisterLine(0x10000, 0x12), "0x10000, 0x12,\r\n");
  EXPECT_EQ(RegisterLine(0xFFFFFFFF, 0x12), "0xffffffff, 0x12,\r\n");
  EXPECT_EQ(I2cLine(0xFEDCBA98, 0x12, 0), "0xfedcba98,0x12,\r\n");
}

TEST_F(ListDumpFileTest, LargeValuesPrintWithAllTheirDigits) {
  EXPECT_EQ(RegisterLine(1, 0x123), "0x0001, 0x123,\r\n");
  EXPECT_EQ(I2cLine(1, 0xABCD, 1), "0x0001,0xabcd,\r\n");
  EXPECT_EQ(I2cLine(1, 0x12345678, 2), "0x0001,0x12345678,\r\n");
}

TEST_F(ListDumpFileTest, WordsOfMode2HaveFourDigits) {
  EXPECT_EQ(I2cLine(0x30, 0x5A, 0), "0x0030,0x5a,\r\n");
  EXPECT_EQ(I2cLine(0x30, 0x5A, 1), "0x0030,0x5a,\r\n");
  EXPECT_EQ(I2cLine(0x30, 0x5A, 2), "0x0030,0x005a,\r\n");
}

TEST_F(ListDumpFileTest, ModesWith32BitAddressesAndUnknownOnesHaveNoLines) {
  for (const std::uint32_t mode : {3U, 4U, 5U, 6U, 0xFFU, 0x100U, 0xFFFFFFFFU}) {
    EXPECT_EQ(I2cLine(0x30, 0x5A, mode), "") << mode;
  }
}

TEST_F(ListDumpFileTest, RegisterFileHoldsTheEntriesInOrder) {
  const Entries list = {{0xFFFD, 0x00}, {0xFFFE, 0x12}, {0x0100, 0x5A}, {0x0101, 0xFF}};
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteRegisterLines(file, list); }),
            "0xfffd, 0x00,\r\n"
            "0xfffe, 0x12,\r\n"
            "0x0100, 0x5a,\r\n"
            "0x0101, 0xff,\r\n");
}

TEST_F(ListDumpFileTest, I2cFileHoldsTheEntriesInOrder) {
  const Entries list = {{0x3000, 0x01}, {0x3001, 0x02}};
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteI2cLines(file, list, 0); }),
            "0x3000,0x01,\r\n0x3001,0x02,\r\n");
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteI2cLines(file, list, 2); }),
            "0x3000,0x0001,\r\n0x3001,0x0002,\r\n");
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteI2cLines(file, list, 5); }), "");
}

TEST_F(ListDumpFileTest, BinaryFileHoldsTheLowByteOfEachValue) {
  const Entries list = {{0xFFFD, 0x12}, {0x3000, 0x0A}, {0x3001, 0x1FF}, {0x3002, 0xFFFFFF0D}};
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteListValues(file, list); }),
            "\x12\x0A\xFF\x0D");
}

TEST_F(ListDumpFileTest, EmptyRunMakesAnEmptyFile) {
  EXPECT_EQ(Written([](borvan::File& file) { borvan::WriteRegisterLines(file, {}); }), "");
  EXPECT_EQ(Written([](borvan::File& file) { borvan::WriteI2cLines(file, {}, 1); }), "");
  EXPECT_EQ(Written([](borvan::File& file) { borvan::WriteListValues(file, {}); }), "");
}

TEST_F(ListDumpFileTest, LongRunHasEveryLineOnce) {
  constexpr std::uint32_t kCount = 0x10000;
  constexpr std::size_t kLineLength = 15;
  Entries list;
  for (std::uint32_t address = 0; address < kCount; ++address) {
    list.push_back({address, address & 0xFFU});
  }
  const std::string text =
      Written([&](borvan::File& file) { borvan::WriteRegisterLines(file, list); });
  ASSERT_EQ(text.size(), kCount * kLineLength);
  EXPECT_EQ(text.substr(0, kLineLength), "0x0000, 0x00,\r\n");
  // Around the 262,144th byte, where one write ends and the next begins: line 17,476.
  EXPECT_EQ(text.substr(17475 * kLineLength, 3 * kLineLength),
            "0x4443, 0x43,\r\n0x4444, 0x44,\r\n0x4445, 0x45,\r\n");
  EXPECT_EQ(text.substr(0xFFFF * kLineLength), "0xffff, 0xff,\r\n");
}

TEST_F(ListDumpFileTest, LinesAreReadBack) {
  const Entries list = {
      {0xFFFD, 0x12}, {0xFFFE, 0x34}, {0x0000, 0x00}, {0x3012, 0xFF}, {0x12345678, 0x9ABCDEF0}};
  Written([&](borvan::File& file) { borvan::WriteRegisterLines(file, list); });
  EXPECT_EQ(borvan::ReadListFile(folder.Path("list.out")), list);
  for (const std::uint32_t mode : {0U, 1U, 2U}) {
    Written([&](borvan::File& file) { borvan::WriteI2cLines(file, list, mode); });
    EXPECT_EQ(borvan::ReadListFile(folder.Path("list.out")), list) << mode;
  }
}

TEST_F(ListDumpFileTest, LineOfTheDroppedAddressIsNotReadBack) {
  const Entries list = {{0xFFF1, 1}, {0xFFF2, 2}, {0xFFF3, 3}};
  EXPECT_EQ(Written([&](borvan::File& file) { borvan::WriteRegisterLines(file, list); }),
            "0xfff1, 0x01,\r\n0xfff2, 0x02,\r\n0xfff3, 0x03,\r\n");
  EXPECT_EQ(borvan::ReadListFile(folder.Path("list.out")), (Entries{{0xFFF1, 1}, {0xFFF3, 3}}));
}

TEST_F(ListDumpFileTest, FullDiskIsAFileError) {
  auto file = borvan::File::OpenToWrite("/dev/full");
  ASSERT_TRUE(file.has_value());
  const Entries list = {{1, 2}};
  EXPECT_THROW(borvan::WriteRegisterLines(*file, list), borvan::FileError);
  EXPECT_THROW(borvan::WriteI2cLines(*file, list, 0), borvan::FileError);
  EXPECT_THROW(borvan::WriteListValues(*file, list), borvan::FileError);
  EXPECT_NO_THROW(borvan::WriteI2cLines(*file, list, 5)) << "nothing is to be written";
}

}  // namespace
}  // namespace borvan_test
