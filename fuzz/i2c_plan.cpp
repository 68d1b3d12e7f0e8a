// Both ways of writing an I2C list, steps and packets: what they send, and their pauses, must match
// the list, and the sensors must have its values afterwards.

#include <string>
#include <vector>

#include "meaning/i2c_reading.h"
#include "protocol/i2c_list_plan.h"
#include "support/check.h"
#include "support/lists.h"
#include "support/memory_chip.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_test::I2cPath;
using borvan_test::I2cReading;
using borvan_test::I2cWriteEvent;
using borvan_test::List;

constexpr std::uint32_t kI2cSelector = 2;
constexpr std::uint32_t kI2cBlockSelector = 6;

std::uint32_t BigEndian(const borvan::Packet& packet, std::size_t at, std::size_t count) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    number = number << 8 | packet.at(at + i);
  }
  return number;
}

// Adds the writes of a packet. Bytes after the last one are unused.
void AddWrites(I2cReading& reading, const borvan::Packet& packet) {
  const std::uint8_t mode = packet[2] & 0x0F;
  Check(packet[0] <= 1 && mode <= 2 && packet[3] > 0, "head of a packet");
  const bool is_run = packet[0] == 0;
  const std::size_t address_bytes = mode == 0 ? 1 : 2;
  const std::size_t data_bytes = mode == 2 ? 2 : 1;
  const std::uint32_t first = BigEndian(packet, 8 - address_bytes, address_bytes);
  std::size_t at = is_run ? 8 : 4;
  for (std::uint32_t i = 0; i < packet[3]; ++i) {
    std::uint32_t address = first + i;
    if (!is_run) {
      address = BigEndian(packet, at, address_bytes);
      at += address_bytes;
    }
    reading.events.push_back(
        I2cWriteEvent(packet[1], mode, address, BigEndian(packet, at, data_bytes)));
    at += data_bytes;
  }
  for (; at < packet.size(); ++at) {
    CheckEqual(packet[at], 0xFF, "an unused byte of a packet");
  }
}

void CheckSame(const I2cReading& expected, const I2cReading& planned) {
  if (planned.events != expected.events) {
    CheckEqual(borvan_test::ToText(planned.events), borvan_test::ToText(expected.events), "events");
  }
  Check(expected.incomplete == planned.incomplete, "one of both is incomplete");
}

I2cReading PlannedPackets(const List& list, std::uint32_t option, borvan_fuzz::MemoryChip& chip) {
  const borvan::I2cListPlan plan = borvan::PlanI2cPackets(list, option);
  I2cReading planned;
  std::size_t sent = 0;
  std::size_t polls = 0;
  for (const borvan::I2cListAction& action : plan.actions) {
    polls += action.polls;
    switch (action.kind) {
      case borvan::I2cListAction::Kind::kSend: {
        const borvan::Packet& packet = plan.packets.at(sent++);
        CheckEqual(packet[2] >> 4, option & 0x0F, "option of a packet");
        AddWrites(planned, packet);
        chip.Take(kI2cBlockSelector, packet);
        break;
      }
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
  CheckEqual(sent, plan.packets.size(), "packets sent");
  Check(planned.incomplete ? polls <= list.size() : polls == list.size(),
        "a stop request is asked for once for each entry");
  return planned;
}

I2cReading PlannedSteps(const List& list, borvan_fuzz::MemoryChip& chip) {
  const std::vector<borvan::I2cListStep> steps = borvan::PlanI2cSteps(list);
  I2cReading planned;
  for (const borvan::I2cListStep& step : steps) {
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
        const auto commands = borvan::I2cStepWrite(step);
        planned.events.push_back(
            I2cWriteEvent(commands[0][1], commands[0][2],
                          static_cast<std::uint32_t>(commands[1][2] << 8 | commands[1][1]),
                          static_cast<std::uint32_t>(commands[2][2] << 8 | commands[2][1])));
        for (const borvan::I2cCommand& command : commands) {
          chip.Take(kI2cSelector, command);
        }
        break;
      }
    }
  }
  Check(planned.incomplete || steps.size() == list.size(), "one step for each entry");
  return planned;
}

borvan_test::CameraSetup Setup() {
  borvan_test::CameraSetup setup;
  setup.sensors = {{0x20, 0}, {0x21, 1}, {0x22, 2}, {0x00, 1}, {0xFF, 0}};
  return setup;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const borvan_test::CameraSetup kSetup = Setup();
  static auto& chip = *new borvan_fuzz::MemoryChip;
  if (chip.configuration.sensors.empty()) {
    chip.configuration.absent_slave = virtual_camera::AbsentSlave::kZeros;
    for (const auto& [slave, mode] : kSetup.sensors) {
      chip.configuration.sensors.push_back({.slave = slave, .mode = mode, .registers = {}});
    }
  }
  borvan_fuzz::Input input(data, size);
  const std::uint32_t option = input.Byte();
  const List list = borvan_fuzz::TakeList(input);
  for (const I2cPath path : {I2cPath::kPackets, I2cPath::kSteps}) {
    chip.Restart();
    const I2cReading expected = borvan_test::ReadI2cList(list, path);
    CheckSame(expected, path == I2cPath::kPackets ? PlannedPackets(list, option, chip)
                                                  : PlannedSteps(list, chip));
    Check(chip.Written() == borvan_test::SensorsAfter(expected, kSetup).registers,
          "the sensors' registers are not what the list says");
  }
  return 0;
}
