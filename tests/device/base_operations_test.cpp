// What the base class answers by itself: the operations it leaves to the chip, the texts of
// results, and the small questions.

#include <gtest/gtest.h>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

class BaseOperationsTest : public DeviceTest {
 protected:
 public:
  borvan::BorvanUSBBase base{std::make_unique<ScriptedPlatform>(script)};
};

TEST_F(BaseOperationsTest, StateAtConstruction) {
  EXPECT_EQ(base.GetDeviceCount(), 0);
  EXPECT_TRUE(base.GetDeviceList().empty());
  EXPECT_EQ(base.GetSelectedIndex(), 0);
  EXPECT_EQ(base.GetSelectedDevice().path, "");
  EXPECT_EQ(base.GetSelectedDevice().moniker, nullptr);
  EXPECT_EQ(base.Jobs().progress_percent, 0);
  EXPECT_EQ(base.Jobs().progress_status, 0);
  EXPECT_FALSE(base.Jobs().stop_requested);
  EXPECT_FALSE(base.Jobs().job_running);
  EXPECT_EQ(base.MarkerSkip(), 1);
}

TEST_F(BaseOperationsTest, ConstructionInitialisesCom) {
  const int before = script->com_initialisations;
  const borvan::BorvanUSBBase another(std::make_unique<ScriptedPlatform>(script));
  EXPECT_EQ(script->com_initialisations, before + 1);
}

TEST_F(BaseOperationsTest, EveryChipOperationAnswersNotImplemented) {
  std::string value = "5a";
  std::vector<std::uint8_t> bytes = {1};
  std::vector<borvan::ListEntry> list = {{1, 2}};
  std::uint32_t length = 77;
  std::uint8_t buffer = 0;
  EXPECT_EQ(base.FlashWrite("0", "0"), kNotImplementedResult);
  EXPECT_EQ(base.FlashRead("0", value), kNotImplementedResult);
  EXPECT_EQ(base.FlashErase("0"), kNotImplementedResult);
  EXPECT_EQ(base.FlashWriteImage({1, 2, 3}, 0, {}), kNotImplementedResult);
  EXPECT_EQ(base.FlashQuickReadImage(bytes, 0, 1, {}), kNotImplementedResult);
  EXPECT_EQ(base.RegisterWriteList({{1, 2}}, 0, {}), kNotImplementedResult);
  EXPECT_EQ(base.RegisterReadList(list, 0, 1, {}), kNotImplementedResult);
  EXPECT_EQ(base.RegisterWrite("0", "0", 0), kNotImplementedResult);
  EXPECT_EQ(base.RegisterRead("0", value, 0), kNotImplementedResult);
  EXPECT_EQ(base.I2cWriteList({{1, 2}}, 0, {}), kNotImplementedResult);
  EXPECT_EQ(base.I2cReadList(list, 0, 0, 1, 0, {}), kNotImplementedResult);
  EXPECT_EQ(base.ReservedA("", "", ""), kNotImplementedResult);
  EXPECT_EQ(base.ReservedB("", ""), kNotImplementedResult);
  EXPECT_EQ(base.ChannelGetLength(1, &length), kNotImplementedResult);
  EXPECT_EQ(base.ChannelSet(1, 1, &buffer), kNotImplementedResult);
  EXPECT_EQ(base.ChannelGet(1, 1, &buffer), kNotImplementedResult);
  // Nothing of the caller's was touched.
  EXPECT_EQ(value, "5a");
  EXPECT_EQ(bytes, std::vector<std::uint8_t>{1});
  EXPECT_EQ(list, (std::vector<borvan::ListEntry>{{1, 2}}));
  EXPECT_EQ(length, 77U);
}

TEST_F(BaseOperationsTest, UnimplementedOperationsReleaseTheCallbackAndNeverCallIt) {
  auto token = std::make_shared<int>(0);
  const std::weak_ptr<int> released = token;
  borvan::ProgressCallback progress = [token](std::int32_t, std::int32_t) { ++*token; };
  base.FlashWriteImage({}, 0, std::move(progress));
  EXPECT_EQ(*token, 0);
  token.reset();
  EXPECT_TRUE(released.expired());
}

TEST_F(BaseOperationsTest, ReservedOperationsStayUnimplementedInTheChipsClass) {
  EXPECT_EQ(device->ReservedA("1", "2", "3"), kNotImplementedResult);
  EXPECT_EQ(device->ReservedB("1", "2"), kNotImplementedResult);
}

TEST_F(BaseOperationsTest, ErrorTextsOfTheLibrarysOwnCodes) {
  EXPECT_EQ(base.GetErrorText(0xE0000001), "Flash failed to erase");
  EXPECT_EQ(base.GetErrorText(0xE0000002), "GetLen fails in channel");
  EXPECT_EQ(base.GetErrorText(0xE0000003), "Flash write  failed");  // two spaces
  EXPECT_EQ(base.GetErrorText(0xE0000004), "Invalid address");
  EXPECT_EQ(base.GetErrorText(0xE0000005), "Flash read failed");
  EXPECT_EQ(base.GetErrorText(0xE0000006), "Termination of work");
  EXPECT_EQ(base.GetErrorText(0xE0000007), "The Fast interface failed to execute");
  EXPECT_EQ(base.GetErrorText(0xE0000008), "The values of fff8 and fffe were not obtained");
  EXPECT_EQ(base.GetErrorText(0xE0000009), "Device not found");
  EXPECT_EQ(base.GetErrorText(0xE000000A), "File name error or file error");
  EXPECT_EQ(base.GetErrorText(0xE000000B), "File format failed");
  EXPECT_TRUE(script->asked_messages.empty());
}

TEST_F(BaseOperationsTest, ErrorTextGoesByBit29AndTheLow16BitsAlone) {
  EXPECT_EQ(base.GetErrorText(0x20000001), "Flash failed to erase");
  EXPECT_EQ(base.GetErrorText(0xFFFF0003), "Flash write  failed");
  EXPECT_TRUE(script->asked_messages.empty());
}

TEST_F(BaseOperationsTest, ErrorTextOfSystemCodesIsTheSystems) {
  script->messages[0x80004005] = "Unspecified error\r\n";
  EXPECT_EQ(base.GetErrorText(0x80004005), "Unspecified error\r\n");
  EXPECT_EQ(script->asked_messages, std::vector<std::uint32_t>{0x80004005});
}

TEST_F(BaseOperationsTest, ErrorTextOfUnknownCodesFallsThroughToTheSystem) {
  // Keys 12 and 0 with bit 29 set; keys of ours with it clear; success.
  for (const std::uint32_t code :
       {0xE000000CU, 0xE0000000U, 0xE000FFFFU, 0xC0000003U, 0x80000001U, 0x00000003U, 0U}) {
    script->asked_messages.clear();
    script->messages.clear();
    EXPECT_EQ(base.GetErrorText(code), "") << std::hex << code;
    EXPECT_EQ(script->asked_messages, std::vector<std::uint32_t>{code}) << std::hex << code;
    script->messages[code] = "known to the system";
    EXPECT_EQ(base.GetErrorText(code), "known to the system") << std::hex << code;
  }
}

TEST_F(BaseOperationsTest, DeviceIsAlwaysPresentWhateverTheOpeningGives) {
  // opened, file not found, access denied, sharing violation, invalid name, no such device
  for (const std::uint32_t error : {0U, 2U, 5U, 32U, 123U, 433U}) {
    script->open_error = error;
    EXPECT_TRUE(base.CheckDevicePresent("\\\\?\\usb#a", "Camera")) << error;
  }
  EXPECT_EQ(script->opened_paths.size(), 6U);
  EXPECT_EQ(script->opened_paths.back(), "\\\\?\\usb#a");
}

TEST_F(BaseOperationsTest, DeviceIsAbsentForTheOneErrorNumberThatNeverComes) {
  script->open_error = 0x800701B1;
  EXPECT_FALSE(base.CheckDevicePresent("\\\\?\\usb#a", "Camera"));
}

TEST_F(BaseOperationsTest, ProbeFailsWithoutAChip) {
  EXPECT_FALSE(base.ProbeDevice());
  EXPECT_FALSE(device->ProbeDevice());
}

TEST_F(BaseOperationsTest, ProbeReadsRegisterZeroAsAByte) {
  const auto chip = std::make_shared<MemoryChip>();
  List({MakeCamera(u'a', chip)});
  device->SelectDevice(0);
  chip->ForgetTransfers();
  EXPECT_TRUE(device->ProbeDevice());
  const std::vector<std::vector<std::uint8_t>> expected = {
      {0x24, 0x00, 0x00, 0x18},  // address low
      {0x24, 0x00, 0x00, 0x58},  // address high
  };
  EXPECT_EQ(chip->Sent(1), expected);
  chip->Intercept([](const Transfer&) { return static_cast<borvan::Result>(0x8007001F); });
  EXPECT_FALSE(device->ProbeDevice());
}

TEST_F(BaseOperationsTest, StopIsRequestedAsTheFlagSays) {
  EXPECT_FALSE(base.IsStopRequested());
  base.Jobs().stop_requested = true;
  EXPECT_TRUE(base.IsStopRequested());
  base.Jobs().stop_requested = false;
  EXPECT_FALSE(base.IsStopRequested());
}

}  // namespace
}  // namespace borvan_test
