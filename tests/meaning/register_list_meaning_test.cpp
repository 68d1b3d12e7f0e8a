// Register lists: runs, scatter blocks and marks leave in the chip what the list says entry by
// entry.

#include <gtest/gtest.h>

#include "camera_in_process.h"
#include "comparison.h"
#include "random_lists.h"
#include "register_reading.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kMeaningSeeds = 3000;

const std::map<std::uint32_t, std::uint32_t> kInitial = {
    {0x100, 0x11223344}, {0x3012, 0xAABBCCDD}, {0x1A3, 0}};

class RegisterLists : public ::testing::Test {
 protected:
  std::string WriteAndCompare(const List& list) {
    camera_.PowerCycle();
    const borvan::Result result = camera_.Device()->RegisterWriteList(list, 0, {});
    const RegisterReading reading = ReadRegisterList(list);
    if (result != reading.result) {
      return "  the result is " + std::to_string(result) + " instead of " +
             std::to_string(reading.result) + "\n";
    }
    return Differences(ChipAfter(reading.writes, kInitial), camera_.Written());
  }

  CameraInProcess camera_{CameraSetup{.registers = kInitial, .sensors = {}}};
};

TEST_F(RegisterLists, LeaveInTheChipWhatEachEntrySays) {
  ExpectAllPass(kMeaningSeeds, RandomRegisterList,
                [this](const List& list) { return WriteAndCompare(list); });
}

// Every length of a run, alone and with a register behind it that breaks or continues it.
TEST_F(RegisterLists, WriteRunsOfEveryLengthWhole) {
  for (std::uint32_t length = 1; length <= 180; ++length) {
    for (const std::uint32_t behind : {0U, 1U, 2U, 0x80U, 0x400U}) {
      List list = {{0xFFFD, 5}};
      for (std::uint32_t i = 0; i < length; ++i) {
        list.push_back({0x200 + i, 0xFF - i});
      }
      list.push_back({behind == 0x400U ? 0x200 + length : behind, 0x77});
      ASSERT_EQ(WriteAndCompare(list), "") << length << " registers, then " << behind;
    }
  }
}

// Two runs with any gap between them, the second one in the middle of or behind the first.
TEST_F(RegisterLists, WriteTwoRunsThatTouchOrOverlap) {
  for (const std::uint32_t first : {19U, 20U, 21U, 22U, 55U, 56U, 57U, 76U, 77U}) {
    for (const std::uint32_t second : {1U, 19U, 20U, 21U, 22U, 55U, 56U, 57U, 78U}) {
      for (std::uint32_t start = 0x1E0; start <= 0x210 + first; start += 7) {
        List list = {{0xFFFD, 0}};
        for (std::uint32_t i = 0; i < first; ++i) {
          list.push_back({0x200 + i, i + 1});
        }
        for (std::uint32_t i = 0; i < second; ++i) {
          list.push_back({start + i, 0x80 + i});
        }
        ASSERT_EQ(WriteAndCompare(list), "") << first << ", " << second << " from " << start;
      }
    }
  }
}

}  // namespace
}  // namespace borvan_test
