// Lists of chip registers: problems that prevent writing, dumps, comparison.
#include "registers/register_list.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "registers/register_diff.h"

namespace borvanusb::tool_test {
namespace {

using Problems = std::vector<ListProblem>;

std::string Row(std::uint32_t first, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    text += Hex(first + static_cast<std::uint32_t>(i)) + ",1,\n";
  }
  return text;
}

TEST(RegisterListTest, GoodListHasItsRegistersCounted) {
  const CheckedRegisterList checked = CheckRegisterList(
      "0xffff,0xff,\n0xfffd,0x05,\n0xfffe,0x0a,\n0x8000,0x01,\n0x8002,0x80,\n0xfffd,0,\n0x8010,1");
  EXPECT_EQ(checked.list.problems, Problems{});
  EXPECT_EQ(checked.list.remarks, Problems{});
  EXPECT_EQ(checked.registers, 3U);
}

TEST(RegisterListTest, EveryProblemIsToldWithItsLine) {
  const CheckedRegisterList checked = CheckRegisterList(
      "0x8000,0x01,\n"
      "0xfffd,0x100,\n"
      "0x18000,1,\n"
      "0x8001,0x100,\n"
      "0xffff,0x100,\n"
      "0xfffe,1,\n");
  EXPECT_EQ(checked.list.problems,
            (Problems{{1,
                       "a register list begins with 0xfffd, this one with 0x8000: nothing would be "
                       "written"},
                      {2, "value 0x100 has more than 8 bits"},
                      {3, "address 0x18000 has more than 16 bits"},
                      {4, "value 0x100 has more than 8 bits"},
                      {5,
                       "a pause of 256 ms would be ignored: at most 0xff (255 ms), longer ones as "
                       "several lines"},
                      {6, "no register follows this delay value: it has no effect"}}));
}

TEST(RegisterListTest, BadLineHidesNoOpeningLine) {
  EXPECT_EQ(CheckRegisterList("0xfffd\n0x8000,1,\n").list.problems,
            (Problems{{1,
                       "no comma in \"0xfffd\": the line would be ignored; write ADDRESS, "
                       "VALUE, or begin a comment with //"}}));
}

TEST(RegisterListTest, ListWithoutARegisterIsAProblem) {
  EXPECT_EQ(CheckRegisterList("// nothing\n").list.problems,
            (Problems{{0, "the list has no register"}}));
}

TEST(RegisterListTest, PauseBehindARegisterIsToldToComeFirst) {
  EXPECT_EQ(CheckRegisterList("0xfffd,0,\n0x1,1,\n0xffff,10,\n0x2,1,\n").list.remarks,
            (Problems{{3,
                       "this pause is made before the first register is written, not here: put "
                       "registers that must wait into a separate list"}}));
}

TEST(RegisterListTest, DelayValuesInsideARowAreToldToBePassedOver) {
  const Problems told = {{22,
                          "delay values inside 21 or more registers in a row are ignored: put "
                          "the rest of the row into a separate list"}};
  // Line 1 is the opening, 20 registers follow, then the mark.
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 20) + "fffd,1\n" + Row(0x114, 1)).list.remarks,
      told);
  // With a gap, or fewer than 21 adjacent registers, the mark has an effect.
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 20) + "fffd,1\n" + Row(0x115, 1)).list.remarks,
      Problems{});
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 10) + "fffd,1\n" + Row(0x10A, 10)).list.remarks,
      Problems{});
  // A block ends at 56 registers, so the mark after it applies to the next block.
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 56) + "fffd,1\n" + Row(0x138, 30)).list.remarks,
      Problems{});
}

TEST(RegisterListTest, RegisterThatBreaksABlockOffBeginsNoRow) {
  // 0x200 ends the block of 21 and stands alone; the 20 registers after it are too few for a block.
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 21) + Row(0x200, 5) + "fffd,1\n" + Row(0x205, 16))
          .list.remarks,
      Problems{});
  EXPECT_EQ(
      CheckRegisterList("fffd,0\n" + Row(0x100, 21) + Row(0x200, 5) + "fffd,1\n" + Row(0x205, 17))
          .list.remarks.size(),
      1U);
}

// On the virtual camera, the first list writes its last twenty values to 0x501 and up.
TEST(RegisterListTest, RegisterOneBehindABrokenOffBlockIsAProblemWhereARowFollows) {
  const std::string broken_off = "fffd,0\n" + Row(0x100, 21) + "500,1,\n";
  const Problems told = {
      {24,
       "register 0x1 after the register that ends 21 or more in a row counts as the next of that "
       "row: these values would go to other registers; put these lines into a separate list"}};
  EXPECT_EQ(CheckRegisterList(broken_off + Row(1, 20)).list.problems, told);
  EXPECT_EQ(CheckRegisterList(broken_off + Row(1, 60)).list.problems, told);
  EXPECT_EQ(CheckRegisterList(broken_off + "fffd,1\n" + Row(1, 20)).list.problems,
            (Problems{{25, told[0].text}}));

  EXPECT_EQ(CheckRegisterList(broken_off + Row(1, 19)).list.problems, Problems{});
  EXPECT_EQ(CheckRegisterList(broken_off + Row(0, 21)).list.problems, Problems{});
  EXPECT_EQ(CheckRegisterList(broken_off + Row(0x500, 1) + Row(1, 20)).list.problems, Problems{});
  EXPECT_EQ(CheckRegisterList("fffd,0\n" + Row(0x100, 20) + "500,1,\n" + Row(1, 20)).list.problems,
            Problems{});
}

TEST(RegisterListTest, DumpLoadsBackAndKeepsMarkersInRemarks) {
  const std::array<std::uint32_t, 4> values = {0x11, 0x22, 0x33, 0x44};
  const std::string dump = RegisterDumpText({0x5AFFFC, 0x5AFFFF}, values);
  EXPECT_EQ(dump,
            "0xfffd, 0x00,\n0xfffe, 0x5a,\n0xfffc, 0x11,\n"
            "// no list can write this register: 0xfffd, 0x22,\n"
            "// no list can write this register: 0xfffe, 0x33,\n"
            "// no list can write this register: 0xffff, 0x44,\n");
  const CheckedRegisterList checked = CheckRegisterList(dump);
  EXPECT_EQ(checked.list.problems, Problems{});
  EXPECT_EQ(checked.registers, 1U);
}

TEST(RegisterListTest, WideDumpSaysThatItCannotBeLoadedAndCannot) {
  const std::array<std::uint32_t, 1> values = {0xDEADBEEF};
  const std::string dump = WideRegisterDumpText({0x8000, 0x8000}, values);
  EXPECT_EQ(dump,
            "// 32-bit registers; a list can't contain them, so this can't be loaded back\n"
            "0x8000 0xdeadbeef\n");
  EXPECT_EQ(CheckRegisterList(dump).list.problems.size(), 1U);
}

TEST(RegisterListTest, TextForTheLibraryHoldsTheEntriesAlone) {
  EXPECT_EQ(RegisterListText(ReadListText("// x\nFFFD,0 // y\n8000,0x1,\n").entries),
            "0xfffd, 0x00,\n0x8000, 0x01,\n");
}

TEST(RegisterDiffTest, TellsDifferentAndMissingRegistersInOrder) {
  const RegisterValues left = RegistersOf(ReadListText("fffd,0\n10,1\n12,2\n14,4\n10,3").entries);
  const RegisterValues right =
      RegistersOf(ReadListText("fffd,9\nffff,1\n11,1\n12,2\n10,5").entries);
  EXPECT_EQ(CompareRegisters(left, right),
            (std::vector<RegisterDifference>{
                {0x10, 3, 5}, {0x11, std::nullopt, 1}, {0x14, 4, std::nullopt}}));
  EXPECT_TRUE(CompareRegisters(left, left).empty());
}

TEST(RegisterDiffTest, PageIsThatOfADumpAlone) {
  EXPECT_EQ(PageOf(ReadListText("fffd,12\nfffe,34\n100,1\n101,1").entries), 0x1234U);
  // Delay values, because the registers are not adjacent, or because there is a second mark.
  EXPECT_EQ(PageOf(ReadListText("fffd,12\nfffe,34\n100,1\n102,1").entries), 0U);
  EXPECT_EQ(PageOf(ReadListText("fffd,12\nfffe,34\n100,1\nfffd,1\n101,1").entries), 0U);
  EXPECT_EQ(PageOf(ReadListText("fffd,12\n100,1\n101,1").entries), 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
