// A camera that is selected once more and has no vendor node any more: each operation's answer
// without a transfer. What the chip said of its features at the first selection still counts.

#include <functional>

#include "camera_with_script.h"
#include "support/guarded_memory.h"

namespace borvan::test {
namespace {

struct OperationCase {
  const char* name;
  bool fast_i2c;
  std::function<Result(BorvanUsb_Q7&)> run;
  Result result;
};

std::string ignored_value;

const OperationCase kOperations[] = {
    {"RegisterWrite, byte", false, [](auto& device) { return device.RegisterWrite("1", "2", 0); },
     kNoChannel},
    {"RegisterWrite, wide", false, [](auto& device) { return device.RegisterWrite("1", "2", 1); },
     kNoChannel},
    {"RegisterRead, byte", false,
     [](auto& device) { return device.RegisterRead("1", ignored_value, 0); }, kNoChannel},
    {"RegisterRead, wide", false,
     [](auto& device) { return device.RegisterRead("1", ignored_value, 1); }, kNoChannel},
    {"I2cWrite", false, [](auto& device) { return device.I2cWrite("1", "2", "3", 0, 0); },
     kNoChannel},
    {"I2cRead", false, [](auto& device) { return device.I2cRead("1", "2", ignored_value, 0, 0); },
     kNoChannel},
    {"FlashWrite", false, [](auto& device) { return device.FlashWrite("1", "2"); }, kNoChannel},
    {"FlashRead", false, [](auto& device) { return device.FlashRead("1", ignored_value); },
     kNoChannel},
    {"FlashErase", false, [](auto& device) { return device.FlashErase("1"); }, kNoChannel},
    {"FlashWriteImage", false, [](auto& device) { return device.FlashWriteImage({0x11}, 0, {}); },
     kEraseFailed},
    {"FlashQuickReadImage", false,
     [](auto& device) {
       Bytes output;
       const Result result = device.FlashQuickReadImage(output, 0, 64, {});
       EXPECT_TRUE(output.empty());
       return result;
     },
     kLengthQueryFailed},
    {"RegisterReadList", false,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.RegisterReadList(list, 0, 56, {});
       EXPECT_TRUE(list.empty());
       return result;
     },
     kNoChannel},
    {"RegisterWriteList", false,
     [](auto& device) {
       return device.RegisterWriteList({{0xFFFD, 0}, {0x10, 1}}, 0, {});
     },
     kNoChannel},
    {"I2cReadList, step by step", false,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.I2cReadList(list, 0x6C, 0, 1, 0, {});
       EXPECT_TRUE(list.empty());
       return result;
     },
     kNoChannel},
    {"I2cReadList, in blocks", true,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.I2cReadList(list, 0x6C, 0, 56, 0, {});
       // The values of failed gets are listed too: here what the requests held there, nothing.
       EXPECT_EQ(list.size(), 57U);
       EXPECT_EQ(list.back(), (ListEntry{56, 0}));
       return result;
     },
     kNoChannel},
    {"I2cWriteList, step by step", false,
     [](auto& device) {
       return device.I2cWriteList({{0xFFF8, 0x6C}, {0xFFFE, 3}, {0x10, 1}}, 0, {});
     },
     kLengthQueryFailed},
    {"I2cWriteList, in packets", true,
     [](auto& device) {
       return device.I2cWriteList({{0xFFF8, 0x6C}, {0xFFFE, 3}, {0x10, 1}}, 0, {});
     },
     kFastInterfaceFailed},
};

TEST(LostChannel, GivesEachOperationItsResultWithoutATransfer) {
  for (const OperationCase& operation : kOperations) {
    const auto control = std::make_shared<ScriptedControl>();
    const auto camera = std::make_shared<Camera>();
    camera->control = control;
    BorvanUsb_Q7 device(PlatformWith(camera));
    static_cast<void>(device.EnumerateDevices());
    control->Play(FeatureRead(operation.fast_i2c ? 0x20 : 0x00));
    ASSERT_EQ(device.SelectDevice(0), 0);
    control->Play({});
    camera->control = nullptr;
    ASSERT_EQ(device.SelectDevice(0), 0);
    const GuardedMemory guarded;
    EXPECT_EQ(operation.run(device), operation.result) << operation.name;
  }
}

}  // namespace
}  // namespace borvan::test
