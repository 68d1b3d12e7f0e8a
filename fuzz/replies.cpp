// Every operation of the device object with a device that answers anything: any results, lengths
// and replies. The sent data, the evaluation of answers and the results must match simple models of
// the operations.

#include <algorithm>
#include <memory>
#include <string>

#include "base/hexadecimal_text.h"
#include "protocol/borvan_usb_q7.h"
#include "support/check.h"
#include "support/lists.h"
#include "support/memory_platform.h"
#include "support/operation_models.h"
#include "support/turns.h"

namespace {

using borvan::FormatHex;
using borvan_fuzz::Bytes;
using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Conversation;
using borvan_fuzz::Dialogue;
using borvan_fuzz::Input;
using borvan_fuzz::List;

constexpr std::uint32_t kLongestRange = 600;

// A selected device, with or without the fast paths.
borvan::BorvanUsb_Q7& MakeDevice(std::uint8_t feature) {
  borvan_fuzz::TheSystem().devices = {{u"usb#vid_1234&pid_5678", u"camera"}};
  auto& device = *new borvan::BorvanUsb_Q7(borvan_fuzz::MakeMemoryPlatform());
  device.EnumerateDevices();
  // The usual length, both commands accepted, and a reply of 4 bytes.
  const Bytes answers = {0, 0, 0, 3, 4, 0x24, feature, 0, 0x28};
  Input input(answers.data(), answers.size());
  Conversation conversation(input);
  borvan_fuzz::SetConversation(&conversation);
  device.SelectDevice(0);
  borvan_fuzz::SetConversation(nullptr);
  CheckEqual(device.FeatureText(), feature == 0x20 ? "20" : "00", "feature register");
  return device;
}

borvan::BorvanUsb_Q7& Device(bool fast) {
  static auto& with_fast_paths = MakeDevice(0x20);
  static auto& without = MakeDevice(0x00);
  return fast ? with_fast_paths : without;
}

// Percentages rise; 100 may come once, at the end.
class Percentages {
 public:
  borvan::ProgressCallback Callback() {
    return [this](std::int32_t status, std::int32_t percent) {
      Check(status == 0 && percent > last_, "a report that does not rise");
      last_ = percent;
    };
  }

 private:
  std::int32_t last_ = 0;
};

// One operation. Its numbers are taken first from the input, then the device's answers.
class Operation {
 public:
  explicit Operation(Input& input)
      : input_(input), conversation_(input), fast_(input.Choice(2) == 1), device_(Device(fast_)) {}

  void Run(std::uint32_t kind) {
    borvan_fuzz::SetConversation(&conversation_);
    Dialogue dialogue(conversation_.exchanges);
    if (kind < 6) {
      Single(kind, dialogue);
    } else {
      Bulk(kind, dialogue);
    }
    borvan_fuzz::SetConversation(nullptr);
    dialogue.End();
  }

 private:
  static void CheckResult(borvan::Result found, borvan::Result expected) {
    CheckEqual(static_cast<std::uint32_t>(found), static_cast<std::uint32_t>(expected),
               "result of the operation");
  }

  void Single(std::uint32_t kind, Dialogue& dialogue);
  void Bulk(std::uint32_t kind, Dialogue& dialogue);
  void ReadRegisters(Dialogue& dialogue);
  void ReadI2c(Dialogue& dialogue);
  void ReadFlash(Dialogue& dialogue);
  void WriteI2c(Dialogue& dialogue);

  std::uint32_t EndOf(std::uint32_t start) { return start - 2 + input_.Half() % kLongestRange; }

  Input& input_;
  Conversation conversation_;
  const bool fast_;
  borvan::BorvanUsb_Q7& device_;
};

void Operation::Single(std::uint32_t kind, Dialogue& dialogue) {
  const std::uint32_t address = input_.Word();
  const std::uint32_t value = input_.Word();
  const std::uint8_t flag = input_.Byte();
  const borvan::I2cAccess access = {.slave = value >> 24,
                                    .register_address = address,
                                    .mode = flag < 0xF0 ? flag % 7 : -1,
                                    .option = value};
  const std::string slave = FormatHex(access.slave);
  std::string text = "77";
  std::string expected = "77";
  switch (kind) {
    case 0:
      CheckResult(device_.RegisterRead(FormatHex(address), text, flag),
                  ModelRegisterRead(dialogue, address, flag == 1, expected));
      break;
    case 1:
      CheckResult(device_.RegisterWrite(FormatHex(address), FormatHex(value), flag),
                  ModelRegisterWrite(dialogue, address, value, flag != 0));
      break;
    case 2:
      CheckResult(device_.I2cRead(slave, FormatHex(address), text, access.mode, access.option),
                  ModelI2cRead(dialogue, access, expected));
      break;
    case 3:
      CheckResult(
          device_.I2cWrite(slave, FormatHex(address), FormatHex(value), access.mode, access.option),
          ModelI2cWrite(dialogue, access, value));
      break;
    case 4:
      CheckResult(device_.FlashRead(FormatHex(address), text),
                  ModelFlashRead(dialogue, address, expected));
      break;
    default:
      if (flag % 2 == 0) {
        CheckResult(device_.FlashErase(FormatHex(address)),
                    ModelFlashCommand(dialogue, borvan::FlashEraseSector(address)));
      } else {
        CheckResult(device_.FlashWrite(FormatHex(address), FormatHex(value)),
                    ModelFlashCommand(dialogue, borvan::FlashWriteWord(address, value)));
      }
      break;
  }
  CheckEqual(text, expected, "the value");
}

void Operation::Bulk(std::uint32_t kind, Dialogue& dialogue) {
  const auto take_bytes = [&] { return input_.Bytes(input_.Half() % 9000); };
  switch (kind) {
    case 6:
      ReadRegisters(dialogue);
      break;
    case 7:
      ReadI2c(dialogue);
      break;
    case 8:
      ReadFlash(dialogue);
      break;
    case 9: {
      const std::uint32_t start = input_.Word();
      Bytes image = take_bytes();
      image.resize(image.size() + input_.Half() % 9000, 0xFF);
      Percentages percentages;
      CheckResult(device_.FlashWriteImage(image, start, percentages.Callback()),
                  ModelFlashWriteImage(dialogue, image, start));
      break;
    }
    case 10: {
      const Bytes bytes = take_bytes();
      Input entries(bytes.data(), bytes.size());
      const List list = borvan_fuzz::TakeList(entries);
      CheckResult(device_.RegisterWriteList(list, 0, {}), ModelRegisterWriteList(dialogue, list));
      break;
    }
    default:
      WriteI2c(dialogue);
      break;
  }
}

void Operation::ReadRegisters(Dialogue& dialogue) {
  const std::uint32_t start = input_.Word();
  const std::uint32_t end = EndOf(start);
  List list;
  List expected;
  CheckResult(device_.RegisterReadList(list, start, end, {}),
              ModelRegisterReadList(dialogue, expected, start, end));
  Check(list == expected, "the list");
}

void Operation::ReadI2c(Dialogue& dialogue) {
  const std::uint32_t start = input_.Word();
  const std::uint32_t end = EndOf(start);
  const std::uint32_t slave = input_.Byte();
  const std::uint32_t mode = input_.Choice(7);
  if (end - start > kLongestRange && end > start) {
    return;  // as signed numbers: from below 0, over everything
  }
  List list;
  List expected;
  CheckResult(device_.I2cReadList(list, slave, start, end, mode, {}),
              fast_ ? ModelI2cReadBlocks(dialogue, expected, slave, start, end, mode)
                    : ModelI2cReadSteps(dialogue, expected, slave, start, end, mode));
  Check(list == expected, "the list");
}

void Operation::ReadFlash(Dialogue& dialogue) {
  const std::uint32_t start = input_.Word();
  const std::uint32_t end = EndOf(start);
  if (end - start > kLongestRange && end > start) {
    return;
  }
  Bytes bytes;
  Bytes expected;
  CheckResult(device_.FlashQuickReadImage(bytes, start, end, [](std::int32_t, std::int32_t) {}),
              ModelFlashReadImage(dialogue, expected, start, end));
  Check(bytes == expected, "the bytes");
}

void Operation::WriteI2c(Dialogue& dialogue) {
  const std::uint32_t option = input_.Byte();
  const Bytes bytes = input_.Bytes(input_.Half() % 2000);
  Input entries(bytes.data(), bytes.size());
  const List list = borvan_fuzz::TakeList(entries);
  CheckResult(
      device_.I2cWriteList(list, option, {}),
      fast_ ? ModelI2cWritePackets(dialogue, list, option) : ModelI2cWriteSteps(dialogue, list));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Device(true);
  const borvan_fuzz::Turns no_waiting;
  Input input(data, size);
  const std::uint32_t kind = input.Choice(12);
  Operation(input).Run(kind);
  return 0;
}
