// The comparison must be able to fail: against readings that are wrong on purpose it finds a list,
// and the smallest one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "camera_in_process.h"
#include "comparison.h"
#include "i2c_reading.h"
#include "random_lists.h"
#include "register_reading.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kComparisonSeeds = 50;

TEST(Shrinking, KeepsOnlyTheEntriesThatShowTheFailure) {
  List list(100, {1, 1});
  list[17] = {2, 0};
  list[18] = {1, 9};
  list[80] = {3, 0};
  const auto shows = [](const List& candidate) {
    const auto two = std::find(candidate.begin(), candidate.end(), borvan::ListEntry{2, 0});
    return std::find(two, candidate.end(), borvan::ListEntry{3, 0}) != candidate.end();
  };
  EXPECT_THAT(Shrink(list, shows),
              ::testing::ElementsAre(borvan::ListEntry{2, 0}, borvan::ListEntry{3, 0}));
}

TEST(Shrinking, LeavesAnEmptyListWhenEveryListFails) {
  EXPECT_THAT(Shrink(List(9, {1, 1}), [](const List&) { return true; }), ::testing::IsEmpty());
}

TEST(Differences, NameThePlaceAndBothValues) {
  const Registers expected = {{{kChip, 0x10}, 1}, {{SensorAt(0x20), 0x3012}, 0x5A}};
  const Registers found = {{{kChip, 0x10}, 1}, {{kChip, 0x11}, 2}};
  EXPECT_EQ(Differences(expected, expected), "");
  EXPECT_EQ(Differences(expected, found),
            "  chip register 0x11: 0x2 instead of nothing\n"
            "  sensor 0x20 register 0x3012: nothing instead of 0x5a\n");
}

// A header, and the register twice with two values: nothing of it can be spared.
TEST(Comparison, FindsAReadingInWhichTheFirstWriteOfARegisterCounts) {
  CameraInProcess camera({});
  const auto finding = FindFailing(kComparisonSeeds, RandomRegisterList, [&](const List& list) {
    camera.PowerCycle();
    camera.Device()->RegisterWriteList(list, 0, {});
    List writes = ReadRegisterList(list).writes;
    std::reverse(writes.begin(), writes.end());
    return Differences(ChipAfter(writes, {}), camera.Written());
  });
  ASSERT_TRUE(finding.has_value());
  ASSERT_EQ(finding->smallest.size(), 3U) << ToText(finding->smallest);
  EXPECT_EQ(finding->smallest[0].address, 0xFFFDU);
  EXPECT_EQ(finding->smallest[1].address & 0xFFFF, finding->smallest[2].address & 0xFFFF);
  EXPECT_THAT(finding->what, ::testing::HasSubstr("chip register"));
}

// A chip that loses the last register of a run block. Scatter blocks repeat an odd last one, so
// only a run shows it: its shortest has 21 registers, and the header stands before them.
TEST(Comparison, FindsAChipThatLosesTheLastRegisterOfARun) {
  CameraInProcess camera({});
  const auto finding = FindFailing(kComparisonSeeds, RandomRegisterList, [&](const List& list) {
    camera.PowerCycle();
    camera.TamperWith([](std::uint32_t selector, std::span<std::uint8_t> block) {
      if (selector == 7 && block[0] == 0x00 && block[1] == 0x00) {
        --block[3];
      }
    });
    camera.Device()->RegisterWriteList(list, 0, {});
    return Differences(ChipAfter(ReadRegisterList(list).writes, {}), camera.Written());
  });
  ASSERT_TRUE(finding.has_value());
  EXPECT_EQ(finding->smallest.size(), 22U) << ToText(finding->smallest);
}

// Slave, width code and the width entry alone, which is a register then.
TEST(Comparison, FindsAReadingInWhichEveryWidthEntryIsACode) {
  const CameraSetup setup{
      .fast_i2c = true, .registers = {}, .sensors = {{0x20, 0}, {0x30, 1}, {0x40, 2}}};
  CameraInProcess camera(setup);
  const auto finding = FindFailing(
      kComparisonSeeds, [](std::uint32_t seed) { return RandomI2cList(seed, Pauses::kNone); },
      [&](const List& list) {
        camera.PowerCycle();
        camera.Device()->I2cWriteList(list, 0, {});
        List misread;
        for (const borvan::ListEntry& entry : list) {
          if (entry.address == 0xFFFE && !misread.empty()) {
            misread.push_back({0xFFF8, misread.front().value});
          }
          misread.push_back(entry);
        }
        return Differences(SensorsAfter(ReadI2cList(misread, I2cPath::kPackets), setup).registers,
                           camera.Written());
      });
  ASSERT_TRUE(finding.has_value());
  EXPECT_EQ(finding->smallest.size(), 3U) << ToText(finding->smallest);
}

}  // namespace
}  // namespace borvan_test
