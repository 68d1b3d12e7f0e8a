// I2C lists: on both paths the sensors hold afterwards what the list says entry by entry.

#include <gtest/gtest.h>

#include <sstream>

#include "camera_in_process.h"
#include "comparison.h"
#include "i2c_reading.h"
#include "random_lists.h"

namespace borvan_test {
namespace {

struct Variant {
  const char* name;
  bool fast;
  bool absent_slave_fails;
  std::uint32_t seeds;  // a step takes three transfers a register, so it gets fewer
};

class I2cLists : public ::testing::TestWithParam<Variant> {
 protected:
  std::string WriteAndCompare(const List& list, std::uint32_t option = 0) {
    camera_.PowerCycle();
    const borvan::Result result = camera_.Device()->I2cWriteList(list, option, {});
    const I2cOutcome outcome = SensorsAfter(ReadI2cList(list, Path()), setup_);
    const std::uint32_t failure = result < 0 ? static_cast<std::uint32_t>(result) : 0;
    if (failure != outcome.failure) {
      std::ostringstream text;
      text << std::hex << "  the result is 0x" << failure << " instead of 0x" << outcome.failure
           << "\n";
      return text.str();
    }
    return Differences(outcome.registers, camera_.Written());
  }

  I2cPath Path() const { return GetParam().fast ? I2cPath::kPackets : I2cPath::kSteps; }

  const CameraSetup setup_{.fast_i2c = GetParam().fast,
                           .registers = {},
                           .sensors = {{0x20, 0}, {0x30, 1}, {0x40, 2}, {0xFF, 0}},
                           .absent_slave_fails = GetParam().absent_slave_fails};
  CameraInProcess camera_{setup_};
};

TEST_P(I2cLists, LeaveInTheSensorsWhatEachEntrySays) {
  ExpectAllPass(
      GetParam().seeds, [](std::uint32_t seed) { return RandomI2cList(seed, Pauses::kNone); },
      [this](const List& list) { return WriteAndCompare(list); });
}

// The option is the chip's own matter; it must not reach into mode, slave or registers.
TEST_P(I2cLists, LeaveTheSameWhateverTheOption) {
  for (const std::uint32_t option : {1U, 0xFU, 0x10U, 0x12345678U, 0xFFFFFFFFU}) {
    ExpectAllPass(
        8, [](std::uint32_t seed) { return RandomI2cList(seed, Pauses::kNone); },
        [&](const List& list) { return WriteAndCompare(list, option); });
  }
}

// Around the 15, 20, 28, 30 and 56 registers that a packet carries, in each width.
TEST_P(I2cLists, WriteEveryNumberOfRegistersWhole) {
  for (const borvan::ListEntry& sensor :
       {borvan::ListEntry{0x20, 1}, borvan::ListEntry{0x30, 3}, borvan::ListEntry{0x40, 4}}) {
    for (std::uint32_t count = 1; count <= 120; count += GetParam().fast ? 1U : 5U) {
      for (const std::uint32_t step : {1U, 2U}) {
        List list = {{0xFFF8, sensor.address}, {0xFFFE, sensor.value}};
        for (std::uint32_t i = 0; i < count; ++i) {
          list.push_back({1 + i * step, 0xA500 + i});
        }
        list.push_back({0, 0x77});
        ASSERT_EQ(WriteAndCompare(list), "")
            << count << " registers, step " << step << ", slave " << sensor.address;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Each, I2cLists,
                         ::testing::Values(Variant{"Packets", true, false, 2000},
                                           Variant{"PacketsWithFailures", true, true, 1000},
                                           Variant{"Steps", false, false, 120},
                                           Variant{"StepsWithFailures", false, true, 120}),
                         [](const ::testing::TestParamInfo<Variant>& variant) {
                           return variant.param.name;
                         });

}  // namespace
}  // namespace borvan_test
