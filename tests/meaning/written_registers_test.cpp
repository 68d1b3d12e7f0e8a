// What the tool reads back after loading a list is what the library and the chip made of it.

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "camera_in_process.h"
#include "i2c/i2c_list.h"
#include "list_text.h"
#include "random_lists.h"
#include "registers/register_list.h"
#include "registers/written_registers.h"

namespace borvan_test {

using namespace borvanusb;
namespace {

constexpr std::uint32_t kWrittenSeeds = 1000;

List ListOf(const std::vector<ListEntry>& entries) {
  List list;
  for (const ListEntry& entry : entries) {
    list.push_back({entry.address, entry.value});
  }
  return list;
}

// A random list that the tool would send: all its numbers fit. Nothing for one with problems.
std::vector<ListEntry> GoodRegisterList(std::uint32_t seed) {
  std::vector<ListEntry> entries = {{0xFFFD, seed % 3 == 0 ? 0U : 0x12U, 0}};
  for (const borvan::ListEntry& entry : RandomRegisterList(seed)) {
    if ((entry.address & 0xFFFF) != 0xFFFF) {  // nobody waits for pauses here
      entries.push_back({entry.address & 0xFFFF, entry.value & 0xFF, 0});
    }
  }
  const CheckedRegisterList checked = CheckRegisterList(RegisterListText(entries));
  return checked.list.problems.empty() ? checked.list.entries : std::vector<ListEntry>();
}

class WrittenRegistersOfChip : public ::testing::TestWithParam<ListMarkers> {};

TEST_P(WrittenRegistersOfChip, AreThoseThatTheListLeaves) {
  const bool page = GetParam() == ListMarkers::kPage;
  CameraInProcess camera(CameraSetup{.registers = {}, .sensors = {}, .markers_are_page = page});
  std::uint32_t good = 0;
  for (std::uint32_t seed = 1; seed <= kWrittenSeeds; ++seed) {
    const std::vector<ListEntry> entries = GoodRegisterList(seed);
    if (entries.empty()) {
      continue;
    }
    ++good;
    camera.PowerCycle();
    ASSERT_EQ(camera.Device()->RegisterWriteList(ListOf(entries), 0, {}), 0);
    Registers wanted;
    for (const auto& [address, value] : WrittenRegisters(entries, GetParam())) {
      wanted[{kChip, address}] = value;
    }
    ASSERT_EQ(Differences(wanted, camera.Written()), "") << "seed " << seed << "\n"
                                                         << ToText(ListOf(entries));
  }
  EXPECT_GT(good, kWrittenSeeds / 2);
}

INSTANTIATE_TEST_SUITE_P(Each, WrittenRegistersOfChip,
                         ::testing::Values(ListMarkers::kDelays, ListMarkers::kPage));

struct I2cSensor {
  std::uint8_t slave;
  std::uint8_t mode;
  std::uint32_t code;
};
constexpr std::array<I2cSensor, 4> kSensors = {
    {{0x20, 0, 0x01}, {0x21, 0, 0x00}, {0x30, 1, 0x03}, {0x40, 2, 0x04}}};

// Few registers, so that they are written again and again, those among them to which width codes
// go.
std::vector<ListEntry> GoodI2cList(std::uint32_t seed) {
  std::mt19937 random(seed);
  constexpr std::array<std::uint32_t, 6> kAddresses = {0x10, 0x11, 0x12, 0x40, 0xFD, 0xFE};
  std::vector<ListEntry> entries;
  for (std::uint32_t part = 0; part <= random() % 6; ++part) {
    const I2cSensor sensor = kSensors.at(random() % kSensors.size());
    entries.push_back({0xFFF8, sensor.slave, 0});
    if (random() % 4 == 0) {
      entries.push_back({0xFEF0, 1, 0});
    }
    entries.push_back({0xFFFE, sensor.code, 0});
    for (std::uint32_t i = 0; i < random() % 70; ++i) {
      const bool lone_width = random() % 20 == 0;
      const bool in_row = random() % 2 == 0;
      const std::uint32_t address = in_row ? 0x80 + i : kAddresses.at(random() % kAddresses.size());
      entries.push_back(
          {lone_width ? 0xFFFE : address, static_cast<std::uint32_t>(random() % 256), 0});
    }
  }
  const CheckedI2cList checked = CheckI2cList(I2cListText(entries, std::nullopt), std::nullopt);
  return checked.list.problems.empty() ? checked.list.entries : std::vector<ListEntry>();
}

class WrittenRegistersOfSensors : public ::testing::TestWithParam<bool> {};

TEST_P(WrittenRegistersOfSensors, AreThoseThatTheListLeaves) {
  CameraSetup setup{.fast_i2c = GetParam(), .registers = {}, .sensors = {}};
  for (const I2cSensor& sensor : kSensors) {
    setup.sensors[sensor.slave] = sensor.mode;
  }
  CameraInProcess camera(setup);
  std::uint32_t good = 0;
  std::uint32_t uncertain = 0;
  for (std::uint32_t seed = 1; seed <= kWrittenSeeds / 10; ++seed) {
    const std::vector<ListEntry> entries = GoodI2cList(seed);
    if (entries.empty()) {
      continue;
    }
    ++good;
    camera.PowerCycle();
    ASSERT_EQ(camera.Device()->I2cWriteList(ListOf(entries), 0, {}), 0);
    const WrittenI2cRegisters written = WrittenByI2cList(entries, std::nullopt);
    Registers found = camera.Written();
    for (const auto& [place, value] : written.values) {
      const Place where{SensorAt(static_cast<std::uint8_t>(place.slave)), place.address};
      ASSERT_EQ(found.count(where), 1U) << "seed " << seed << ", register " << place.address;
      ASSERT_EQ(found[where], value) << "seed " << seed << ", register " << place.address;
      found.erase(where);
    }
    // What is left are width codes.
    for (const auto& [where, value] : found) {
      const bool is_code = (where.second & 0xFF) == 0xFE && value <= 4;
      const I2cRegister place{
          where.first - 1, setup.sensors[static_cast<std::uint8_t>(where.first - 1)], where.second};
      uncertain += static_cast<std::uint32_t>(written.uncertain.count(place));
      ASSERT_TRUE(written.uncertain.count(place) == 1 || (is_code && !GetParam()))
          << "seed " << seed << ", slave " << where.first - 1 << ", register " << where.second;
    }
  }
  EXPECT_GT(good, kWrittenSeeds / 20);
  EXPECT_GT(uncertain, 0U);
}

INSTANTIATE_TEST_SUITE_P(StepsAndPackets, WrittenRegistersOfSensors, ::testing::Bool());

}  // namespace
}  // namespace borvan_test
