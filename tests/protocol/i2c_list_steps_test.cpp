// The step path of an I2C list: which entries are written, remembered or waited for.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "protocol/i2c_list_plan.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using Kind = I2cListStep::Kind;

std::vector<Kind> Kinds(const List& list) {
  std::vector<Kind> kinds;
  for (const I2cListStep& step : PlanI2cSteps(list)) {
    kinds.push_back(step.kind);
  }
  return kinds;
}

// The commands of entry `index`.
std::array<I2cCommand, 3> Commands(const List& list, std::size_t index) {
  return I2cStepWrite(PlanI2cSteps(list).at(index));
}

TEST(I2cListSteps, ARegisterIsWrittenByThreeCommands) {
  const List list = {{0xFFF8, 0x16C}, {0xFFFE, 4}, {0x12345678, 0xAABBCCDD}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kWrite));
  EXPECT_THAT(Commands(list, 2), ElementsAre(I2cCommand{0x18, 0x6C, 0x02, 0x01},    // slave, mode
                                             I2cCommand{0x18, 0x78, 0x56, 0x02},    // R0 R1
                                             I2cCommand{0x18, 0xDD, 0xCC, 0x04}));  // V0 V1
}

TEST(I2cListSteps, TheWidthCodeItselfIsWrittenToRegisterFFFE) {
  const List list = {{0xFFF8, 0x20}, {0xFFFE, 3}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kWidth));
  EXPECT_THAT(Commands(list, 1), ElementsAre(I2cCommand{0x18, 0x20, 0x01, 0x01},    // its own mode
                                             I2cCommand{0x18, 0xFE, 0xFF, 0x02},    // 0xFFFE
                                             I2cCommand{0x18, 0x03, 0x00, 0x04}));  // the code
}

TEST(I2cListSteps, WidthCodesStandForModesAndUnknownOnesForMode0) {
  struct CodeCase {
    std::uint32_t code;
    std::uint8_t mode;
    std::uint8_t low;   // of the code as it is written
    std::uint8_t high;  // its next byte
  };
  constexpr CodeCase kCases[] = {{0, 0, 0x00, 0x00},       {1, 0, 0x01, 0x00},
                                 {2, 0, 0x02, 0x00},       {3, 1, 0x03, 0x00},
                                 {4, 2, 0x04, 0x00},       {5, 0, 0x05, 0x00},
                                 {6, 0, 0x06, 0x00},       {0x103, 0, 0x03, 0x01},
                                 {0x10004, 0, 0x04, 0x00}, {0xFFFFFFFF, 0, 0xFF, 0xFF}};
  for (const CodeCase& each : kCases) {
    const List list = {{0xFFF8, 0x6C}, {0xFFFE, each.code}, {0x10, 0x20}};
    EXPECT_THAT(Commands(list, 1), ElementsAre(I2cCommand{0x18, 0x6C, each.mode, 0x01},
                                               I2cCommand{0x18, 0xFE, 0xFF, 0x02},
                                               I2cCommand{0x18, each.low, each.high, 0x04}))
        << each.code;
    EXPECT_EQ(Commands(list, 2)[0], (I2cCommand{0x18, 0x6C, each.mode, 0x01})) << each.code;
  }
}

TEST(I2cListSteps, PausesAreUnsignedAndReach255) {
  const std::vector<I2cListStep> steps = PlanI2cSteps({{0xFFFF, 0},
                                                       {0xFFFF, 1},
                                                       {0xFFFF, 255},
                                                       {0xFFFF, 256},
                                                       {0xFFFF, 0x7FFFFFFF},
                                                       {0xFFFF, 0x80000000},
                                                       {0xFFFF, 0xFFFFFFFF}});
  ASSERT_EQ(steps.size(), 7U);
  const std::uint32_t lengths[] = {0, 1, 255};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(steps[i].kind, Kind::kPause) << i;
    EXPECT_EQ(steps[i].value, lengths[i]) << i;
  }
  for (std::size_t i = 3; i < 7; ++i) {
    EXPECT_EQ(steps[i].kind, Kind::kNothing) << i;
  }
}

TEST(I2cListSteps, IgnoredEntriesArePassedOver) {
  const List list = {{0xFEF0, 1}, {0xFEF1, 2}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kNothing));
}

TEST(I2cListSteps, PausesAndIgnoredEntriesMayStandBetweenSlaveAndWidth) {
  const List list = {{0xFFF8, 0x6C}, {0xFFFF, 1}, {0xFFFF, 256}, {0xFEF0, 1},
                     {0xFEF1, 1},    {0xFFFE, 4}, {0x10, 1}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kPause, Kind::kNothing, Kind::kNothing,
                                       Kind::kNothing, Kind::kWidth, Kind::kWrite));
  EXPECT_EQ(Commands(list, 6)[0], (I2cCommand{0x18, 0x6C, 0x02, 0x01}));
}

TEST(I2cListSteps, ALoneWidthEntryIsARegister) {
  // A register between slave and width: the width entry is no longer directly behind the slave.
  const List list = {{0xFFF8, 0x6C}, {0xFFFE, 3},  {0xFFFE, 4},
                     {0xFFF8, 0x6E}, {0x10, 0x20}, {0xFFFE, 0}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kWrite, Kind::kNothing,
                                       Kind::kWrite, Kind::kWrite));
  EXPECT_THAT(Commands(list, 2),
              ElementsAre(I2cCommand{0x18, 0x6C, 0x01, 0x01},  // mode stays
                          I2cCommand{0x18, 0xFE, 0xFF, 0x02}, I2cCommand{0x18, 0x04, 0x00, 0x04}));
  EXPECT_THAT(Commands(list, 5),
              ElementsAre(I2cCommand{0x18, 0x6E, 0x01, 0x01},  // mode stays
                          I2cCommand{0x18, 0xFE, 0xFF, 0x02}, I2cCommand{0x18, 0x00, 0x00, 0x04}));
}

TEST(I2cListSteps, ALaterSlaveKeepsTheWidthMode) {
  const List list = {{0xFFF8, 0x6C}, {0xFFFE, 4}, {0xFFF8, 0x20}, {0x10, 0x20}};
  EXPECT_EQ(Commands(list, 3)[0], (I2cCommand{0x18, 0x20, 0x02, 0x01}));
}

TEST(I2cListSteps, ARegisterBeforeSlaveAndWidthEndsTheList) {
  EXPECT_THAT(Kinds({{0x10, 1}, {0xFFF8, 0x6C}}), ElementsAre(Kind::kIncomplete));
  EXPECT_THAT(Kinds({{0xFFFF, 1}, {0xFFFE, 3}, {0x10, 1}}),  // no slave before the width
              ElementsAre(Kind::kPause, Kind::kIncomplete));
  EXPECT_THAT(Kinds({{0xFFF8, 0x6C}, {0x10, 1}, {0xFFFE, 3}}),  // no width
              ElementsAre(Kind::kNothing, Kind::kIncomplete));
}

TEST(I2cListSteps, ASlaveOf32OnesCountsAsUnset) {
  const List list = {{0xFFF8, 0xFFFFFFFF}, {0xFFFE, 3}, {0x10, 1}, {0x11, 1}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kIncomplete));
  // The width code is written all the same.
  EXPECT_EQ(Commands(list, 1)[0], (I2cCommand{0x18, 0xFF, 0x01, 0x01}));
  // So it is after a slave that was set.
  EXPECT_THAT(
      Kinds({{0xFFF8, 0x6C}, {0xFFFE, 3}, {0x10, 1}, {0xFFF8, 0xFFFFFFFF}, {0x11, 1}}),
      ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kWrite, Kind::kNothing, Kind::kIncomplete));
  // The slave 0xFF is a slave.
  EXPECT_THAT(Kinds({{0xFFF8, 0xFF}, {0xFFFE, 3}, {0x10, 1}}),
              ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kWrite));
}

TEST(I2cListSteps, MarkersCompareAll32Bits) {
  const List list = {{0xFFF8, 0x6C}, {0xFFFE, 3},  {0x1FFFF, 1}, {0x1FFF8, 1},
                     {0x1FFFE, 1},   {0x1FEF0, 1}, {0x1FEF1, 1}};
  EXPECT_THAT(Kinds(list), ElementsAre(Kind::kNothing, Kind::kWidth, Kind::kWrite, Kind::kWrite,
                                       Kind::kWrite, Kind::kWrite, Kind::kWrite));
}

TEST(I2cListSteps, AnEmptyListHasNone) {
  EXPECT_TRUE(PlanI2cSteps({}).empty());
}

}  // namespace
}  // namespace borvan::test
