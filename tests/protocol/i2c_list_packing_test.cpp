// The fast path of an I2C list: which registers share a packet, and what happens in which order.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "protocol/i2c_list_plan.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What a packet says of itself. The bytes are those of the tests of whole packets.
struct Shape {
  bool is_run;
  unsigned mode;
  unsigned count;
  friend bool operator==(const Shape&, const Shape&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Shape& shape) {
    return out << (shape.is_run ? "run of " : "scatter of ") << shape.count << " in mode "
               << shape.mode;
  }
};

Shape RunOf(unsigned mode, unsigned count) {
  return {true, mode, count};
}

Shape ScatterOf(unsigned mode, unsigned count) {
  return {false, mode, count};
}

std::vector<Shape> Shapes(const List& list) {
  std::vector<Shape> shapes;
  for (const Packet& packet : PlanI2cPackets(list, 0).packets) {
    shapes.push_back({packet[0] == 0x00, packet[2], packet[3]});
  }
  return shapes;
}

// `list` behind a slave and `width_codes`, each of which follows the slave anew.
List With(std::initializer_list<std::uint32_t> width_codes, const List& list) {
  List whole;
  for (const std::uint32_t code : width_codes) {
    whole.push_back({0xFFF8, 0x6C});
    whole.push_back({0xFFFE, code});
  }
  whole.insert(whole.end(), list.begin(), list.end());
  return whole;
}

TEST(I2cListPacking, RunsHaveTheLimitOfTheirWidthCode) {
  EXPECT_THAT(Shapes(With({1}, Registers(0x10, 57, 0))), ElementsAre(RunOf(0, 56), RunOf(0, 1)));
  EXPECT_THAT(Shapes(With({3}, Registers(0x10, 57, 0))), ElementsAre(RunOf(1, 56), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({4}, Registers(0x10, 57, 0))),
              ElementsAre(RunOf(2, 28), RunOf(2, 28), RunOf(2, 1)));
  EXPECT_THAT(Shapes(With({3}, Registers(0x10, 56, 0))), ElementsAre(RunOf(1, 56)));
}

TEST(I2cListPacking, ScatteredPacketsHaveTheLimitOfTheirWidthCode) {
  // The register behind a full packet begins a run again.
  EXPECT_THAT(Shapes(With({0}, Registers(0x10, 31, 0, 2))),
              ElementsAre(ScatterOf(0, 30), RunOf(0, 1)));
  EXPECT_THAT(Shapes(With({1}, Registers(0x10, 31, 0, 2))),
              ElementsAre(ScatterOf(0, 30), RunOf(0, 1)));
  EXPECT_THAT(Shapes(With({3}, Registers(0x10, 21, 0, 2))),
              ElementsAre(ScatterOf(1, 20), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({4}, Registers(0x10, 17, 0, 2))),
              ElementsAre(ScatterOf(2, 15), ScatterOf(2, 2)));
}

TEST(I2cListPacking, ARunBelowTheScatterLimitBecomesScattered) {
  EXPECT_THAT(Shapes(With({0}, Joined({Registers(0x10, 5, 0), {{0x80, 0}}}))),
              ElementsAre(ScatterOf(0, 6)));
  // And is sent at once when that fills it.
  EXPECT_THAT(Shapes(With({0}, Joined({Registers(0x10, 29, 0), {{0x80, 0}, {0x81, 0}}}))),
              ElementsAre(ScatterOf(0, 30), RunOf(0, 1)));
  EXPECT_THAT(Shapes(With({3}, Joined({Registers(0x10, 19, 0), {{0x80, 0}, {0x81, 0}}}))),
              ElementsAre(ScatterOf(1, 20), RunOf(1, 1)));
}

TEST(I2cListPacking, ARunOfTheScatterLimitIsSentBeforeAnotherRegister) {
  EXPECT_THAT(Shapes(With({0}, Joined({Registers(0x10, 30, 0), Registers(0x80, 2, 0)}))),
              ElementsAre(RunOf(0, 30), RunOf(0, 2)));
  EXPECT_THAT(Shapes(With({3}, Joined({Registers(0x10, 20, 0), Registers(0x80, 2, 0)}))),
              ElementsAre(RunOf(1, 20), RunOf(1, 2)));
  EXPECT_THAT(Shapes(With({4}, Joined({Registers(0x10, 15, 0), Registers(0x80, 2, 0)}))),
              ElementsAre(RunOf(2, 15), RunOf(2, 2)));
}

TEST(I2cListPacking, ScatteredStaysScatteredThoughConsecutiveRegistersFollow) {
  EXPECT_THAT(Shapes(With({0}, Joined({{{0x80, 0}}, Registers(0x10, 29, 0)}))),
              ElementsAre(ScatterOf(0, 30)));
}

TEST(I2cListPacking, UnknownCodesMeanMode1) {
  for (const std::uint32_t code : {2U, 5U, 6U, 0x100U, 0x10004U, 0xFFFFFFFFU}) {
    EXPECT_THAT(Shapes(With({code}, {{0x10, 1}})), ElementsAre(RunOf(1, 1))) << code;
  }
}

TEST(I2cListPacking, AnUnknownCodeFirstHasNoLimitButThePacket) {
  EXPECT_THAT(Shapes(With({2}, Registers(0x10, 57, 0))), ElementsAre(RunOf(1, 56), RunOf(1, 1)));
}

TEST(I2cListPacking, WithoutAScatterLimitEachOtherRegisterSendsThePendingRun) {
  EXPECT_THAT(Shapes(With({2}, Registers(0x10, 3, 0, 2))),
              ElementsAre(RunOf(1, 1), RunOf(1, 1), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({2}, Joined({Registers(0x10, 5, 0), Registers(0x80, 3, 0)}))),
              ElementsAre(RunOf(1, 5), RunOf(1, 3)));
}

TEST(I2cListPacking, LimitsOfAnEarlierCodeHoldWithinWhatAPacketCarries) {
  // Code 0 left 56 and 30, of which mode 1 carries 56 and 20.
  EXPECT_THAT(Shapes(With({0, 2}, Registers(0x10, 57, 0))), ElementsAre(RunOf(1, 56), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({0, 2}, Registers(0x10, 21, 0, 2))),
              ElementsAre(ScatterOf(1, 20), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({0, 2}, Joined({Registers(0x10, 20, 0), {{0x80, 0}}}))),
              ElementsAre(RunOf(1, 20), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({0, 2}, Joined({Registers(0x10, 19, 0), {{0x80, 0}}}))),
              ElementsAre(ScatterOf(1, 20)));
  // Code 4 left 28 and 15, which are fewer than mode 1 carries.
  EXPECT_THAT(Shapes(With({4, 2}, Registers(0x10, 29, 0))), ElementsAre(RunOf(1, 28), RunOf(1, 1)));
  EXPECT_THAT(Shapes(With({4, 2}, Registers(0x10, 16, 0, 2))),
              ElementsAre(ScatterOf(1, 15), RunOf(1, 1)));
  // A known code sets its own again.
  EXPECT_THAT(Shapes(With({4, 2, 3}, Registers(0x10, 29, 0))), ElementsAre(RunOf(1, 29)));
}

TEST(I2cListPacking, IgnoredEntriesAndLongPausesDoNotPartARun) {
  EXPECT_THAT(Shapes(With({0}, {{0x10, 1}, {0xFEF0, 9}, {0x11, 2}, {0xFEF1, 9}, {0x12, 3}})),
              ElementsAre(RunOf(0, 3)));
  EXPECT_THAT(
      Shapes(With({0}, {{0x10, 1}, {0xFFFF, 256}, {0x11, 2}, {0xFFFF, 0x7FFFFFFF}, {0x12, 3}})),
      ElementsAre(RunOf(0, 3)));
}

TEST(I2cListPacking, ASlaveSendsWhatIsPendingForTheSlaveBefore) {
  const I2cListPlan plan = PlanI2cPackets(With({0}, {{0x10, 1}, {0xFFF8, 0x20}, {0x11, 2}}), 0);
  ASSERT_EQ(plan.packets.size(), 2U);
  EXPECT_EQ(Text(plan.packets[0]), Text(Block({0x00, 0x6C, 0x00, 0x01,  // slave 0x6C
                                               0xFF, 0xFF, 0xFF, 0x10, 0x01})));
  EXPECT_EQ(Text(plan.packets[1]), Text(Block({0x00, 0x20, 0x00, 0x01,  // slave 0x20
                                               0xFF, 0xFF, 0xFF, 0x11, 0x02})));
}

TEST(I2cListPacking, RegistersCountAsSignedNumbers) {
  // -1 and 0.
  EXPECT_THAT(Shapes(With({0}, {{0xFFFFFFFF, 1}, {0x00000000, 2}})), ElementsAre(RunOf(0, 2)));
  // The largest number and the smallest.
  EXPECT_THAT(Shapes(With({0}, {{0x7FFFFFFF, 1}, {0x80000000, 2}})), ElementsAre(ScatterOf(0, 2)));
  // Low bytes alone are not enough.
  EXPECT_THAT(Shapes(With({0}, {{0x0FF, 1}, {0x200, 2}})), ElementsAre(ScatterOf(0, 2)));
}

// An action of the plan, as a test writes it down.
struct Action {
  I2cListAction::Kind kind;
  std::uint32_t polls;
  std::uint32_t pause;
  friend bool operator==(const Action&, const Action&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Action& action) {
    constexpr const char* kNames[] = {"send", "pause", "incomplete", "end"};
    return out << kNames[static_cast<std::size_t>(action.kind)] << " after " << action.polls
               << " polls, " << action.pause << " ms";
  }
};

Action Send(std::uint32_t polls) {
  return {I2cListAction::Kind::kSend, polls, 0};
}
Action Pause(std::uint32_t polls, std::uint32_t pause) {
  return {I2cListAction::Kind::kPause, polls, pause};
}
Action Incomplete(std::uint32_t polls) {
  return {I2cListAction::Kind::kIncomplete, polls, 0};
}
Action End(std::uint32_t polls) {
  return {I2cListAction::Kind::kEnd, polls, 0};
}

std::vector<Action> Actions(const List& list) {
  std::vector<Action> actions;
  for (const I2cListAction& action : PlanI2cPackets(list, 0).actions) {
    actions.push_back({action.kind, action.polls, action.pause});
  }
  return actions;
}

TEST(I2cListPacking, APauseFallsBetweenTwoPackets) {
  EXPECT_THAT(Actions(With({0}, {{0x10, 1}, {0xFFFF, 100}, {0x11, 2}})),
              ElementsAre(Send(4), Pause(0, 100), Send(1), End(0)));
  EXPECT_THAT(Actions(With({0}, {{0x10, 1}, {0xFFFF, 255}})),
              ElementsAre(Send(4), Pause(0, 255), End(0)));
}

TEST(I2cListPacking, APauseWithNothingPendingSendsNothing) {
  EXPECT_THAT(Actions({{0xFFFF, 3}, {0xFFFF, 4}}), ElementsAre(Pause(1, 3), Pause(1, 4), End(0)));
}

TEST(I2cListPacking, ANegativePauseSendsWhatIsPendingAndTakesNoTime) {
  for (const std::uint32_t pause : {0x80000000U, 0xFFFFFFFFU, 0U}) {
    EXPECT_THAT(Actions(With({0}, {{0x10, 1}, {0xFFFF, pause}, {0x11, 2}})),
                ElementsAre(Send(4), Send(1), End(0)))
        << pause;
  }
}

TEST(I2cListPacking, ALongPauseDoesNothing) {
  for (const std::uint32_t pause : {256U, 0x7FFFFFFFU}) {
    EXPECT_THAT(Actions(With({0}, {{0x10, 1}, {0xFFFF, pause}, {0x11, 2}})),
                ElementsAre(Send(5), End(0)))
        << pause;
  }
}

TEST(I2cListPacking, ARegisterBeforeSlaveAndWidthEndsTheListUnsent) {
  const List lists[] = {
      {{0x10, 1}, {0xFFF8, 0x6C}, {0xFFFE, 0}},  // neither
      {{0xFFFE, 0}, {0x10, 1}},                  // no slave before the width
  };
  for (const List& list : lists) {
    EXPECT_THAT(Actions(list), ElementsAre(Incomplete(1), End(0)));
    EXPECT_THAT(Shapes(list), IsEmpty());
  }
  EXPECT_THAT(Actions({{0xFFF8, 0x6C}, {0x10, 1}, {0xFFFE, 0}}),  // no width
              ElementsAre(Incomplete(2), End(0)));
}

TEST(I2cListPacking, ASlaveOf32OnesCountsAsUnset) {
  EXPECT_THAT(Actions({{0xFFF8, 0xFFFFFFFF}, {0xFFFE, 0}, {0x10, 1}}),
              ElementsAre(Incomplete(3), End(0)));
  // What was pending is sent before it.
  EXPECT_THAT(Actions(With({0}, {{0x10, 1}, {0xFFF8, 0xFFFFFFFF}, {0x11, 1}, {0x12, 1}})),
              ElementsAre(Send(4), Incomplete(1), End(0)));
  EXPECT_THAT(Actions({{0xFFF8, 0xFF}, {0xFFFE, 0}, {0x10, 1}}), ElementsAre(Send(3), End(0)));
}

TEST(I2cListPacking, PausesAndIgnoredEntriesMayStandBetweenSlaveAndWidth) {
  EXPECT_THAT(Shapes({{0xFFF8, 0x6C},
                      {0xFFFF, 1},
                      {0xFFFF, 256},
                      {0xFEF0, 0},
                      {0xFEF1, 0},
                      {0xFFFE, 4},
                      {0x10, 1}}),
              ElementsAre(RunOf(2, 1)));
}

TEST(I2cListPacking, EachEntryIsPolledForOnce) {
  // 61 entries: two markers, 59 registers of which the 56th fills a packet.
  EXPECT_THAT(Actions(With({0}, Registers(0x10, 59, 0))), ElementsAre(Send(58), Send(3), End(0)));
  EXPECT_THAT(Actions(With({0}, {{0xFEF0, 0}})), ElementsAre(End(3)));
  EXPECT_THAT(Actions({}), ElementsAre(End(0)));
}

}  // namespace
}  // namespace borvan::test
