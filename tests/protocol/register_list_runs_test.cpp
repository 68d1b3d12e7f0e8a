// Which registers of a register list form runs.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "protocol/register_list_plan.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;

// What a block says of itself. The bytes are those of the tests of whole blocks.
struct Shape {
  bool is_run;
  unsigned count;
  unsigned first_register;
  friend bool operator==(const Shape&, const Shape&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Shape& shape) {
    return out << (shape.is_run ? "run of " : "scatter of ") << shape.count << " from 0x"
               << std::hex << shape.first_register << std::dec;
  }
};

Shape RunOf(unsigned count, unsigned first_register) {
  return {true, count, first_register};
}

Shape ScatterOf(unsigned count, unsigned first_register) {
  return {false, count, first_register};
}

// Of `list` behind a header.
std::vector<Shape> Shapes(const List& list) {
  std::vector<Shape> shapes;
  for (const RegisterListBlock& block : PlanRegisterList(Joined({{{0xFFFD, 0}}, list})).blocks) {
    const Packet& bytes = block.packet;
    const bool is_run = bytes[1] == 0x00;
    const std::size_t at = is_run ? 6 : 10;  // where the first register stands
    shapes.push_back({is_run, bytes[3], bytes[at] * 256U + bytes[at + 1]});
  }
  return shapes;
}

struct RunCase {
  const char* what;
  List list;
  std::vector<Shape> shapes;
};
const RunCase kRuns[] = {
    {"20 are scattered", Registers(0x100, 20, 0), {ScatterOf(18, 0x100), ScatterOf(2, 0x112)}},
    {"21", Registers(0x100, 21, 0), {RunOf(21, 0x100)}},
    {"55", Registers(0x100, 55, 0), {RunOf(55, 0x100)}},
    {"56", Registers(0x100, 56, 0), {RunOf(56, 0x100)}},
    {"20 are scattered whatever follows",
     Joined({Registers(0x100, 20, 0), Registers(0x300, 21, 0)}),
     {ScatterOf(18, 0x100), ScatterOf(2, 0x112), RunOf(21, 0x300)}},

    {"1 behind a full run", Registers(0x100, 57, 0), {RunOf(56, 0x100), ScatterOf(2, 0x138)}},
    {"20 behind a full run",
     Registers(0x100, 76, 0),
     {RunOf(56, 0x100), ScatterOf(18, 0x138), ScatterOf(2, 0x14A)}},
    {"21 behind a full run", Registers(0x100, 77, 0), {RunOf(56, 0x100), RunOf(21, 0x138)}},
    {"two full runs", Registers(0x100, 112, 0), {RunOf(56, 0x100), RunOf(56, 0x138)}},

    {"the register that breaks a run begins none, and the 20 behind it are too few",
     Joined({Registers(0x100, 21, 0), Registers(0x500, 21, 0)}),
     {RunOf(21, 0x100), ScatterOf(18, 0x500), ScatterOf(4, 0x512)}},
    {"one more, and a run begins behind the register that broke the first",
     Joined({Registers(0x100, 21, 0), Registers(0x500, 22, 0)}),
     {RunOf(21, 0x100), ScatterOf(2, 0x500), RunOf(21, 0x501)}},
    {"the 56th register closes a full run, so that the next is compared and may begin a run",
     Joined({Registers(0x100, 56, 0), Registers(0x500, 21, 0)}),
     {RunOf(56, 0x100), RunOf(21, 0x500)}},
    {"a register that ends a short run may begin the next",
     Joined({Registers(0x100, 3, 0), Registers(0x500, 21, 0)}),
     {ScatterOf(4, 0x100), RunOf(21, 0x500)}},

    {"register 1 as the first continues nothing",
     Registers(1, 20, 0),
     {ScatterOf(18, 1), ScatterOf(2, 19)}},
    {"21 from register 1", Registers(1, 21, 0), {RunOf(21, 1)}},
    {"56 from register 1", Registers(1, 56, 0), {RunOf(56, 1)}},
    // The run from 1 on counts from the full run's last register, which has been sent by then.
    {"register 1 behind a full run is a step of which the start is passed over",
     Joined({Registers(0x100, 56, 0), Registers(1, 21, 0)}),
     {RunOf(56, 0x100), ScatterOf(18, 1), ScatterOf(4, 19)}},
    {"register 1 behind a broken run is a step from the register that broke it",
     Joined({Registers(0x100, 21, 0), {{0x500, 0}}, Registers(1, 20, 0)}),
     {RunOf(21, 0x100), RunOf(21, 0x500)}},

    {"descending", Registers(0x100, 22, 0, 0xFFFFFFFF), {ScatterOf(18, 0x100), ScatterOf(4, 0xEE)}},
    {"equal", Registers(0x100, 22, 0, 0), {ScatterOf(18, 0x100), ScatterOf(4, 0x100)}},
    {"spaced", Registers(0x100, 22, 0, 2), {ScatterOf(18, 0x100), ScatterOf(4, 0x124)}},
    {"a pause inside does not break a run",
     Joined({Registers(0x100, 10, 0), {{0xFFFF, 5}}, Registers(0x10A, 11, 0)}),
     {RunOf(21, 0x100)}},
};

TEST(RegisterListRuns, HaveFrom21To56Registers) {
  for (const RunCase& each : kRuns) {
    EXPECT_EQ(Shapes(each.list), each.shapes) << each.what;
  }
}

TEST(RegisterListRuns, StepsCompareAll32Bits) {
  EXPECT_THAT(Shapes(Registers(0x1FFF0, 21, 0)), ElementsAre(RunOf(21, 0xFFF0)));
  List alternating = Registers(0x100, 21, 0);
  for (std::size_t i = 1; i < alternating.size(); i += 2) {
    alternating[i].address += 0x10000;
  }
  EXPECT_THAT(Shapes(alternating), ElementsAre(ScatterOf(18, 0x100), ScatterOf(4, 0x112)));
}

TEST(RegisterListRuns, MarksInsideNeitherBreakThemNorCount) {
  const List list = Joined({{{0xFFFD, 1}, {0xFFFE, 2}},  //
                            Registers(0x100, 10, 0x00),  //
                            {{0xFFFD, 8}, {0xFFFE, 9}},  // inside the run
                            Registers(0x10A, 11, 0x0A),
                            {{0x200, 0x77}}});
  const RegisterListPlan plan = PlanRegisterList(list);
  ASSERT_EQ(plan.blocks.size(), 2U);
  EXPECT_EQ(Text(plan.blocks[0].packet),
            Text(RunBlock({0x00, 0x00, 0x01, 0x15,  // run of 21, marked
                           0x01, 0x02,              // delays
                           0x01, 0x00},             // first register
                          21, 0x00)));
  EXPECT_EQ(Text(plan.blocks[1].packet), Text(Block({0x00, 0x01, 0x01, 0x02,  // delay, 2 records
                                                     0xFF, 0xFD, 0x01,        // first delay
                                                     0xFF, 0xFE, 0x02,        // second delay
                                                     0x02, 0x00, 0x77,        // register 0x200
                                                     0x02, 0x00, 0x77})));    // once more
}

TEST(RegisterListRuns, AMarkBeforeALaterRunReplacesTheDelaysAfterTheScatteredOnesWereSent) {
  const List list = Joined({{{0xFFFD, 1}, {0xFFFE, 2}, {0x10, 0x77}},
                            {{0xFFFD, 0x103}, {0xFFFE, 0x204}},
                            Registers(0x100, 21, 0x00),
                            {{0x20, 0x66}}});
  const RegisterListPlan plan = PlanRegisterList(list);
  ASSERT_EQ(plan.blocks.size(), 3U);
  EXPECT_EQ(Text(plan.blocks[0].packet),
            Text(Block({0x00, 0x01, 0x01, 0x02, 0xFF, 0xFD, 0x01, 0xFF, 0xFE, 0x02,  // old delays
                        0x00, 0x10, 0x77, 0x00, 0x10, 0x77})));
  EXPECT_EQ(Text(plan.blocks[1].packet),
            Text(RunBlock({0x00, 0x00, 0x01, 0x15, 0x03, 0x04, 0x01, 0x00}, 21, 0x00)));
  EXPECT_EQ(Text(plan.blocks[2].packet),
            Text(Block({0x00, 0x01, 0x01, 0x02, 0xFF, 0xFD, 0x03, 0xFF, 0xFE, 0x04,  // new ones
                        0x00, 0x20, 0x66, 0x00, 0x20, 0x66})));
}

}  // namespace
}  // namespace borvan::test
