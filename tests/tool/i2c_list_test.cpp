// I2C lists: problems that prevent writing, and dumps that can be loaded again.
#include "i2c/i2c_list.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "base/width_modes.h"

namespace borvanusb::tool_test {
namespace {

using Problems = std::vector<ListProblem>;

Problems ProblemsOf(const std::string& text, const std::optional<I2cTarget>& opening = {}) {
  return CheckI2cList(text, opening).list.problems;
}

TEST(I2cListTest, ListThatOpensItselfNamesItsSlave) {
  const CheckedI2cList checked =
      CheckI2cList("ffff,5\nfff8,6c\nfef0,1\nfffe,03\n3012,5a\nfff8,48\nfffe,01\n02,40\n", {});
  EXPECT_EQ(checked.list.problems, Problems{});
  EXPECT_EQ(checked.list.remarks, Problems{});
  EXPECT_TRUE(checked.opens_itself);
  EXPECT_EQ(checked.slave, 0x6CU);
  EXPECT_EQ(checked.registers, 2U);
}

TEST(I2cListTest, NumbersMustFitTheWidthInForce) {
  EXPECT_EQ(ProblemsOf("fff8,6c\nfffe,03\n3012,100\nfff8,148\nfffe,01\n100,1\nfff8,20\nfffe,04\n"
                       "3000,ffff\n10000,10000\n"),
            (Problems{{3, "value 0x100 is beyond 0xff, the highest in mode 16/8"},
                      {4, "slave 0x148 has more than 8 bits"},
                      {6, "address 0x100 is beyond 0xff, the highest in mode 8/8"},
                      {10, "address 0x10000 is beyond 0xffff, the highest in mode 16/16"},
                      {10, "value 0x10000 is beyond 0xffff, the highest in mode 16/16"}}));
}

TEST(I2cListTest, WidthCodeThatChipsTakeDifferentlyIsAProblem) {
  EXPECT_EQ(ProblemsOf("fff8,6c\nfffe,02\n3012,5a\n"),
            (Problems{{2,
                       "width code 0x02 means one width to some chips and another to others: "
                       "0x01 for 8/8, 0x03 for 16/8, 0x04 for 16/16"}}));
}

TEST(I2cListTest, RegisterBeforeTheWidthCodeIsAProblem) {
  EXPECT_EQ(ProblemsOf("fff8,6c\n3012,5a\n3013,5b\n"),
            (Problems{{2,
                       "there is no width code (0xfffe after 0xfff8) before this register: the "
                       "list would end here"}}));
}

TEST(I2cListTest, SlaveAloneKeepsTheWidth) {
  EXPECT_EQ(ProblemsOf("fff8,6c\nfffe,03\n3012,5a\nfff8,6e\n3012,5a\n"), Problems{});
}

TEST(I2cListTest, WidthCodeWithoutASlaveInFrontIsARegister) {
  EXPECT_EQ(ProblemsOf("fffe,03\n3012,5a\n", I2cTarget{0x6C, 1, 0}),
            (Problems{{1,
                       "0xfffe begins the list: without 0xfff8 before it, it is a register of "
                       "the device, not a width code"}}));
  EXPECT_EQ(CheckI2cList("fff8,6c\nfffe,03\n3012,5a\nfffe,01\n", {}).list.remarks,
            (Problems{{4,
                       "0xfffe without 0xfff8 before it is a register of the device here, not "
                       "a width code"}}));
}

TEST(I2cListTest, RemarksStandInTheOrderOfTheirLines) {
  const Problems remarks =
      CheckI2cList("fff8,6c\nfffe,03\n3012,5a\nfffe,01\n3013,1,2\n", {}).list.remarks;
  ASSERT_EQ(remarks.size(), 2U);
  EXPECT_EQ(remarks[0].line, 4U);  // a width code without a slave
  EXPECT_EQ(remarks[1].line, 5U);  // a third number
}

TEST(I2cListTest, LongPauseAndEmptyListAreProblems) {
  EXPECT_EQ(ProblemsOf("fff8,6c\nfffe,03\nffff,100\n3012,1\n"),
            (Problems{{3,
                       "a pause of 256 ms would be ignored: at most 0xff (255 ms), longer "
                       "ones as several lines"}}));
  EXPECT_EQ(ProblemsOf("fff8,6c\nfffe,03\n"), (Problems{{0, "the list has no register"}}));
}

TEST(I2cListTest, ListWithoutAnOpeningTakesTheOneGiven) {
  const std::string text = "ffff,5\n3012,5a\n";
  const I2cTarget opening{0x6C, 1, 0};
  const CheckedI2cList checked = CheckI2cList(text, opening);
  EXPECT_FALSE(checked.opens_itself);
  EXPECT_EQ(checked.list.problems, Problems{});
  EXPECT_EQ(I2cListText(checked.list.entries, opening),
            "0xfff8, 0x6c,\n0xfffe, 0x03,\n0xffff, 0x05,\n0x3012, 0x5a,\n");
  EXPECT_EQ(ProblemsOf("3012,100\n", opening),
            (Problems{{1, "value 0x100 is beyond 0xff, the highest in mode 16/8"}}));
}

TEST(I2cListTest, ListForAWideModeHoldsNoMarkersOfDevices) {
  const I2cTarget wide{0x6C, 4, 0};
  EXPECT_EQ(ProblemsOf("12345678,abcd\nffff,10\n", wide), Problems{});
  EXPECT_EQ(ProblemsOf("12345678,abcde\n", wide),
            (Problems{{1, "value 0xabcde is beyond 0xffff, the highest in mode 32/16"}}));
  EXPECT_EQ(ProblemsOf("1,1\nfffe,3\n", wide),
            (Problems{{2,
                       "0xfffe chooses a device and a width of at most 16 bits: a list for mode "
                       "32/16 can't hold it"}}));
}

TEST(I2cListTest, DumpLoadsBack) {
  const std::array<std::uint32_t, 3> values = {0x12, 0x3456, 0x7};
  const std::string dump = I2cDumpText({0x20, 2, 0}, {0xFFF7, 0xFFF9}, values);
  EXPECT_EQ(dump,
            "0xfff8, 0x20,\n0xfffe, 0x04,\n0xfff7, 0x0012,\n"
            "// no list can write this register: 0xfff8, 0x3456,\n0xfff9, 0x0007,\n");
  EXPECT_EQ(ProblemsOf(dump), Problems{});
}

TEST(I2cListTest, DumpOfAWideModeSaysHowToLoadIt) {
  const std::array<std::uint32_t, 1> values = {0x89ABCDEF};
  const I2cTarget target{0x20, 5, 0};
  const std::string dump = I2cDumpText(target, {0x1000, 0x1000}, values);
  EXPECT_EQ(dump,
            "// no list can name this device: load with --slave 0x20 --mode 32/32\n"
            "0x00001000, 0x89abcdef,\n");
  EXPECT_EQ(ProblemsOf(dump, target), Problems{});
}

TEST(WidthModesTest, CodesOfListsAreThoseOfTheModes) {
  for (std::int32_t mode = 0; mode <= 2; ++mode) {
    EXPECT_EQ(ModeOfListCode(WidthModeOf(mode).list_code.value()), mode);
  }
  EXPECT_EQ(ModeOfListCode(0), 0);
  EXPECT_EQ(ModeOfListCode(2), std::nullopt);
  EXPECT_EQ(WidthModeOf(4).name, "32/16");
}

}  // namespace
}  // namespace borvanusb::tool_test
