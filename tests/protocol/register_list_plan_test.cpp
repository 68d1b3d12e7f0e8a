// What the blocks of a register list hold, byte by byte, and what decides which block is sent when.

#include "protocol/register_list_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;

// The blocks of a list, eight bytes a line.
std::vector<std::string> Blocks(const List& list) {
  std::vector<std::string> texts;
  for (const RegisterListBlock& block : PlanRegisterList(list).blocks) {
    texts.push_back(Text(block.packet));
  }
  return texts;
}

TEST(RegisterListPlan, AnUnmarkedRunCarriesTheDelaysInForce) {
  const List list = Joined({{{0xFFFD, 3}, {0xFFFE, 4}, {0x10, 0x99}}, Registers(0x3456, 21, 0xE0)});
  const Packet run = Block({0x00, 0x00,  // run block
                            0x00,        // not marked
                            0x15,        // 21 values
                            0x03, 0x04,  // first and second delay, of register 0x10
                            0x34, 0x56,  // first register
                            0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7,  // values
                            0xE8, 0xE9, 0xEA, 0xEB, 0xEC, 0xED, 0xEE, 0xEF,  //
                            0xF0, 0xF1, 0xF2, 0xF3, 0xF4});
  const Packet scatter = Block({0x00, 0x01,          // scatter block
                                0x01,                // delay: neither value is 0
                                0x02,                // records
                                0xFF, 0xFD, 0x03,    // first delay
                                0xFF, 0xFE, 0x04,    // second delay
                                0x00, 0x10, 0x99,    // register 0x10
                                0x00, 0x10, 0x99});  // once more
  EXPECT_THAT(Blocks(list), ElementsAre(Text(scatter), Text(run)));
}

TEST(RegisterListPlan, TwentyConsecutiveRegistersAreScattered) {
  const List list = Joined({{{0xFFFD, 1}, {0xFFFE, 2}}, Registers(0x1FE, 20, 0xA0)});
  const Packet full = {0x00, 0x01,                          // scatter block
                       0x01,                                // delay
                       0x12,                                // 18 records: the block is full
                       0xFF, 0xFD, 0x01,                    // first delay
                       0xFF, 0xFE, 0x02,                    // second delay
                       0x01, 0xFE, 0xA0, 0x01, 0xFF, 0xA1,  // register, value
                       0x02, 0x00, 0xA2, 0x02, 0x01, 0xA3,  //
                       0x02, 0x02, 0xA4, 0x02, 0x03, 0xA5,  //
                       0x02, 0x04, 0xA6, 0x02, 0x05, 0xA7,  //
                       0x02, 0x06, 0xA8, 0x02, 0x07, 0xA9,  //
                       0x02, 0x08, 0xAA, 0x02, 0x09, 0xAB,  //
                       0x02, 0x0A, 0xAC, 0x02, 0x0B, 0xAD,  //
                       0x02, 0x0C, 0xAE, 0x02, 0x0D, 0xAF,  //
                       0x02, 0x0E, 0xB0, 0x02, 0x0F, 0xB1};
  const Packet rest = Block({0x00, 0x01, 0x01, 0x02,  // scatter block, delay, 2 records
                             0xFF, 0xFD, 0x01,        // first delay
                             0xFF, 0xFE, 0x02,        // second delay
                             0x02, 0x10, 0xB2,        // registers 0x210
                             0x02, 0x11, 0xB3});      // and 0x211
  EXPECT_THAT(Blocks(list), ElementsAre(Text(full), Text(rest)));
}

TEST(RegisterListPlan, SixtyConsecutiveRegistersAreARunOf56AndFourScattered) {
  const List list = Joined({{{0xFFFD, 0}}, Registers(0x100, 60, 0x80)});
  const Packet run = {0x00, 0x00,  // run block
                      0x01,        // marked
                      0x38,        // 56 values: the block is full
                      0x00, 0x00,  // delays
                      0x01, 0x00,  // first register
                      0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87,  // values
                      0x88, 0x89, 0x8A, 0x8B, 0x8C, 0x8D, 0x8E, 0x8F,  //
                      0x90, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97,  //
                      0x98, 0x99, 0x9A, 0x9B, 0x9C, 0x9D, 0x9E, 0x9F,  //
                      0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7,  //
                      0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD, 0xAE, 0xAF,  //
                      0xB0, 0xB1, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7};
  const Packet rest = Block({0x00, 0x01, 0x00, 0x04,              // scatter block, 4 records
                             0xFF, 0xFD, 0x00, 0xFF, 0xFE, 0x00,  // delays
                             0x01, 0x38, 0xB8, 0x01, 0x39, 0xB9,  // register, value
                             0x01, 0x3A, 0xBA, 0x01, 0x3B, 0xBB});
  EXPECT_THAT(Blocks(list), ElementsAre(Text(run), Text(rest)));
}

TEST(RegisterListPlan, RecordsCarryTheLowHalfOfTheRegisterAndTheLowByteOfTheValue) {
  const List list = {{0xFFFD, 0}, {0x12345678, 0xAABBCCDD}, {0x8000FFFE, 0x100}};
  EXPECT_THAT(Blocks(list),
              ElementsAre(Text(Block({0x00, 0x01, 0x00, 0x02,              // 2 records
                                      0xFF, 0xFD, 0x00, 0xFF, 0xFE, 0x00,  // delays
                                      0x56, 0x78, 0xDD,                    // 0x12345678
                                      0xFF, 0xFE, 0x00}))));  // no marker: all 32 bits count
}

// One register's block with the delays that its marks give.
std::string SingleBlock(std::uint8_t flag, std::uint8_t first, std::uint8_t second,
                        std::uint8_t register_address) {
  return Text(Block({0x00, 0x01, flag, 0x02,           // scatter block, 2 records
                     0xFF, 0xFD, first,                // first delay
                     0xFF, 0xFE, second,               // second delay
                     0x00, register_address, 0x77,     // the register
                     0x00, register_address, 0x77}));  // once more
}

TEST(RegisterListPlan, DelayFlagLooksAtWholeValuesOfWhichTheLowByteIsSent) {
  struct DelayCase {
    std::uint32_t first;
    std::uint32_t second;
    std::string block;
  };
  const DelayCase cases[] = {
      {0, 0, SingleBlock(0, 0x00, 0x00, 0x10)},
      {1, 0, SingleBlock(0, 0x01, 0x00, 0x10)},
      {0, 1, SingleBlock(0, 0x00, 0x01, 0x10)},
      {1, 1, SingleBlock(1, 0x01, 0x01, 0x10)},
      {0x100, 0x80000000, SingleBlock(1, 0x00, 0x00, 0x10)},
      {0x1FE, 0x203, SingleBlock(1, 0xFE, 0x03, 0x10)},
  };
  for (const DelayCase& each : cases) {
    EXPECT_THAT(Blocks({{0xFFFD, each.first}, {0xFFFE, each.second}, {0x10, 0x77}}),
                ElementsAre(each.block))
        << each.first << ", " << each.second;
  }
}

TEST(RegisterListPlan, MarksSetTheDelaysOfTheRegistersBehindThem) {
  struct MarkCase {
    const char* what;
    List list;
    std::vector<std::string> blocks;
  };
  const MarkCase cases[] = {
      {"the block with the delays before precedes a marked register",
       {{0xFFFD, 1}, {0xFFFE, 2}, {0x10, 0x77}, {0xFFFD, 3}, {0xFFFE, 4}, {0x20, 0x77}},
       {SingleBlock(1, 1, 2, 0x10), SingleBlock(1, 3, 4, 0x20)}},
      {"a second delay alone takes the last first delay",
       {{0xFFFD, 7}, {0x10, 0x77}, {0xFFFE, 9}, {0x20, 0x77}},
       {SingleBlock(0, 7, 0, 0x10), SingleBlock(1, 7, 9, 0x20)}},
      {"a first delay alone makes the second 0",
       {{0xFFFD, 1}, {0xFFFE, 2}, {0x10, 0x77}, {0xFFFD, 3}, {0x20, 0x77}},
       {SingleBlock(1, 1, 2, 0x10), SingleBlock(0, 3, 0, 0x20)}},
      {"the second delay may stand before the first",
       {{0xFFFD, 1}, {0x10, 0x77}, {0xFFFE, 2}, {0xFFFD, 3}, {0x20, 0x77}},
       {SingleBlock(0, 1, 0, 0x10), SingleBlock(1, 3, 2, 0x20)}},
      {"the later mark counts",
       {{0xFFFD, 1}, {0xFFFE, 2}, {0xFFFD, 5}, {0xFFFE, 6}, {0x10, 0x77}},
       {SingleBlock(1, 5, 6, 0x10)}},
      {"marks with no register behind them send nothing",
       {{0xFFFD, 1}, {0xFFFE, 2}, {0x10, 0x77}, {0xFFFD, 3}, {0xFFFF, 4}},
       {SingleBlock(1, 1, 2, 0x10)}},
      {"marks and pauses alone make no block", {{0xFFFD, 1}, {0xFFFE, 2}, {0xFFFF, 3}}, {}},
      {"nothing makes no block", {}, {}},
  };
  for (const MarkCase& each : cases) {
    EXPECT_EQ(Blocks(each.list), each.blocks) << each.what;
  }
}

TEST(RegisterListPlan, DelaysStayInForceFromBlockToBlock) {
  // 19 registers: a full block, then one more.
  const List list = Joined({{{0xFFFD, 8}, {0xFFFE, 9}}, Registers(0x10, 18, 0, 2), {{0x80, 0x77}}});
  const std::vector<std::string> blocks = Blocks(list);
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[1], SingleBlock(1, 8, 9, 0x80));
}

TEST(RegisterListPlan, EighteenRegistersLeaveNothingBehindTheirFullBlock) {
  EXPECT_EQ(Blocks(Joined({{{0xFFFD, 0}}, Registers(0x10, 18, 0, 2)})).size(), 1U);
  EXPECT_EQ(Blocks(Joined({{{0xFFFD, 0}}, Registers(0x10, 36, 0, 2)})).size(), 2U);
}

TEST(RegisterListPlan, PausesOfUpTo255AllComeFirst) {
  const List list = {{0xFFFF, 0},   {0xFFFD, 1},          {0xFFFE, 2}, {0xFFFF, 100}, {0x10, 0x77},
                     {0xFFFF, 255}, {0xFFFF, 0xFFFFFFFF}, {0xFFFF, 1}, {0xFFFF, 256}};
  const RegisterListPlan plan = PlanRegisterList(list);
  EXPECT_THAT(plan.pauses, ElementsAre(0U, 100U, 255U, 1U));
  // They change nothing in the blocks.
  EXPECT_THAT(Blocks(list), ElementsAre(SingleBlock(1, 1, 2, 0x10)));
}

TEST(RegisterListPlan, OnlyTheResultOfABlockSentForARunIsNotKept) {
  const List list = Joined({{{0xFFFD, 0}, {0x10, 0x77}},  // sent for the mark behind it
                            {{0xFFFD, 0}, {0x20, 0x77}},  // sent for the run
                            Registers(0x100, 21, 0),      //
                            Registers(0x300, 18, 0, 2),   // full
                            Registers(0x500, 21, 0),      // nothing is left to be sent for it
                            {{0x10, 0x77}}});             // the end
  std::vector<bool> keeps;
  for (const RegisterListBlock& block : PlanRegisterList(list).blocks) {
    keeps.push_back(block.keeps_result);
  }
  EXPECT_THAT(keeps, ElementsAre(true, false, true, true, true, true));
}

}  // namespace
}  // namespace borvan::test
