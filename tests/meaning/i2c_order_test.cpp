// The order of pauses and writes of an I2C list, seen on the plan, so that nothing sleeps.

#include <gtest/gtest.h>

#include "comparison.h"
#include "i2c_reading.h"
#include "protocol/i2c_list_plan.h"
#include "random_lists.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kI2cSeeds = 3000;

List RandomList(std::uint32_t seed) {
  return RandomI2cList(seed, Pauses::kReal);
}

std::string Compare(const I2cReading& expected, const I2cReading& planned) {
  if (expected.incomplete != planned.incomplete) {
    return "  one of them is incomplete\n";
  }
  if (expected.events == planned.events) {
    return "";
  }
  return "the list says\n" + ToText(expected.events) + "planned is\n" + ToText(planned.events);
}

// Bytes as the chip takes them, high byte first.
std::uint32_t BigEndian(const borvan::Packet& packet, std::size_t at, std::size_t count) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    number = number << 8 | packet.at(at + i);
  }
  return number;
}

void AddWrites(I2cReading& reading, const borvan::Packet& packet) {
  const std::uint8_t slave = packet[1];
  const std::uint8_t mode = packet[2] & 0x0F;
  const std::size_t count = packet[3];
  const std::size_t address_bytes = mode == 0 ? 1 : 2;
  const std::size_t data_bytes = mode == 2 ? 2 : 1;
  if (packet[0] == 0x00) {  // a run: the first address ends at byte 7, then values alone
    const std::uint32_t first = BigEndian(packet, 8 - address_bytes, address_bytes);
    for (std::size_t i = 0; i < count; ++i) {
      reading.events.push_back(I2cWriteEvent(slave, mode, first + static_cast<std::uint32_t>(i),
                                             BigEndian(packet, 8 + i * data_bytes, data_bytes)));
    }
    return;
  }
  for (std::size_t i = 0; i < count; ++i) {  // scattered: address and value, from byte 4
    const std::size_t at = 4 + i * (address_bytes + data_bytes);
    reading.events.push_back(I2cWriteEvent(slave, mode, BigEndian(packet, at, address_bytes),
                                           BigEndian(packet, at + address_bytes, data_bytes)));
  }
}

TEST(I2cListOrder, OfPacketsAndPausesIsTheListsOwn) {
  ExpectAllPass(kI2cSeeds, RandomList, [](const List& list) {
    const borvan::I2cListPlan plan = borvan::PlanI2cPackets(list, 0);
    I2cReading planned;
    std::size_t sent = 0;
    for (const borvan::I2cListAction& action : plan.actions) {
      switch (action.kind) {
        case borvan::I2cListAction::Kind::kSend:
          AddWrites(planned, plan.packets.at(sent++));
          break;
        case borvan::I2cListAction::Kind::kPause:
          planned.events.push_back({.pause = action.pause});
          break;
        case borvan::I2cListAction::Kind::kIncomplete:
          planned.incomplete = true;
          break;
        case borvan::I2cListAction::Kind::kEnd:
          break;
      }
    }
    if (sent != plan.packets.size()) {
      return std::string("  packets that nothing sends\n");
    }
    return Compare(ReadI2cList(list, I2cPath::kPackets), planned);
  });
}

TEST(I2cListOrder, OfStepsAndPausesIsTheListsOwn) {
  ExpectAllPass(kI2cSeeds, RandomList, [](const List& list) {
    I2cReading planned;
    for (const borvan::I2cListStep& step : borvan::PlanI2cSteps(list)) {
      switch (step.kind) {
        case borvan::I2cListStep::Kind::kNothing:
          break;
        case borvan::I2cListStep::Kind::kPause:
          if (step.value != 0) {
            planned.events.push_back({.pause = step.value});
          }
          break;
        case borvan::I2cListStep::Kind::kIncomplete:
          planned.incomplete = true;
          break;
        case borvan::I2cListStep::Kind::kWidth:
        case borvan::I2cListStep::Kind::kWrite: {
          // Slave and mode, then the register, then the value; low byte first.
          const auto commands = borvan::I2cStepWrite(step);
          planned.events.push_back(
              I2cWriteEvent(commands[0][1], commands[0][2],
                            static_cast<std::uint32_t>(commands[1][2] << 8 | commands[1][1]),
                            static_cast<std::uint32_t>(commands[2][2] << 8 | commands[2][1])));
          break;
        }
      }
    }
    return Compare(ReadI2cList(list, I2cPath::kSteps), planned);
  });
}

}  // namespace
}  // namespace borvan_test
