// UsbIniDevice, UsbUpdateDevice, UsbGetDeviceNum, UsbSelectDevice and UsbDestroyUSB.

#include <cstdint>
#include <limits>
#include <stdexcept>

#include "api/api_fixture.h"

namespace borvan_test {
namespace {

using Outcome = borvan::VideoInputListing::Outcome;

// The byte read of register 0x1A3: opcode, half of the address low byte first, tag.
const std::vector<std::vector<std::uint8_t>> kFeatureRead = {{0x24, 0xA3, 0x01, 0x18},
                                                             {0x24, 0x00, 0x00, 0x58}};

class DeviceExportsTest : public ApiTest {
 protected:
  static std::int32_t SelectedIndex() { return borvan::GlobalInstance().Get()->GetSelectedIndex(); }
};

TEST_F(DeviceExportsTest, UsbIniDeviceReturnsTheEnumerationsResultUnchanged) {
  EXPECT_EQ(UsbIniDevice(), 1);
  script->listing_result = 0;
  EXPECT_EQ(UsbIniDevice(), 0);
  script->outcome = Outcome::kNoDeviceEnumerator;
  script->listing_result = static_cast<std::int32_t>(0x80040154);
  EXPECT_EQ(UsbIniDevice(), static_cast<std::int32_t>(0x80040154));
}

TEST_F(DeviceExportsTest, FailedUsbIniDeviceLeavesAnInstanceWithoutCameras) {
  script->outcome = Outcome::kNoDeviceEnumerator;
  script->listing_result = static_cast<std::int32_t>(0x80040154);
  UsbIniDevice();
  EXPECT_EQ(UsbGetDeviceNum(), 0);
}

TEST_F(DeviceExportsTest, UsbIniDeviceListsTheCamerasAndInitialisesCom) {
  script->cameras = {MakeCamera(u'a'), MakeCamera(u'b')};
  UsbIniDevice();
  EXPECT_EQ(UsbGetDeviceNum(), 2);
  EXPECT_EQ(script->com_initialisations, 1);
}

TEST_F(DeviceExportsTest, UsbIniDeviceSelectsNothing) {
  script->cameras = {MakeCamera(u'a', chip)};
  UsbIniDevice();
  std::uint32_t value = 5;
  EXPECT_FALSE(UsbRegisterRead(0, &value, 0));
  EXPECT_EQ(value, 5U);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(DeviceExportsTest, UsbIniDeviceReplacesTheInstance) {
  script->cameras = {MakeCamera(u'a'), MakeCamera(u'b')};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(1));
  EXPECT_FALSE(UsbFlashWriteFile("", 0));
  const std::weak_ptr<borvan::BorvanUsb_Q7> former = borvan::GlobalInstance().Get();
  UsbIniDevice();
  EXPECT_TRUE(former.expired());
  EXPECT_EQ(SelectedIndex(), 0);
  EXPECT_STREQ(UsbGetSelectDeviceInfo().name, "");
  EXPECT_EQ(GetProgressInfo(), 0U);
  EXPECT_EQ(script->com_initialisations, 2);
}

TEST_F(DeviceExportsTest, UsbIniDeviceEndsTheFormerInstanceBeforeItMakesAnother) {
  UsbIniDevice();
  const std::weak_ptr<borvan::BorvanUsb_Q7> former = borvan::GlobalInstance().Get();
  bool former_was_gone = false;
  on_platform_made = [&] { former_was_gone = former.expired(); };
  UsbIniDevice();
  EXPECT_TRUE(former_was_gone);
}

TEST_F(DeviceExportsTest, UsbUpdateDeviceListsAnewAndFollowsTheSelection) {
  script->cameras = {MakeCamera(u'a'), MakeCamera(u'b'), MakeCamera(u'c')};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(2));
  script->cameras = {MakeCamera(u'c'), MakeCamera(u'a')};
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(UsbGetDeviceNum(), 2);
  EXPECT_EQ(SelectedIndex(), 2) << "out of the new list, so it stays";
  ASSERT_TRUE(UsbSelectDevice(1));
  script->cameras = {MakeCamera(u'a'), MakeCamera(u'c')};
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(SelectedIndex(), 0);
}

TEST_F(DeviceExportsTest, UsbUpdateDeviceIsTrueWhenTheResultIsNotNegative) {
  UsbIniDevice();
  for (const Outcome outcome : {Outcome::kNoCategory, Outcome::kNoDeviceEnumerator}) {
    script->outcome = outcome;
    script->listing_result = 1;
    EXPECT_TRUE(UsbUpdateDevice());
    script->listing_result = static_cast<std::int32_t>(0x80004005);
    EXPECT_FALSE(UsbUpdateDevice());
  }
}

TEST_F(DeviceExportsTest, UsbSelectDeviceSelectsAndReadsTheFeatureRegister) {
  script->cameras = {MakeCamera(u'b'), MakeCamera(u'a', chip)};
  UsbIniDevice();
  EXPECT_TRUE(UsbSelectDevice(1));
  EXPECT_EQ(SelectedIndex(), 1);
  EXPECT_STREQ(UsbGetSelectDeviceInfo().name, "Camera a");
  EXPECT_EQ(chip->Sent(1), kFeatureRead);
}

TEST_F(DeviceExportsTest, UsbSelectDeviceOfMinusOneIsFalseWithoutTouchingTheSelection) {
  StartWithChip();
  EXPECT_FALSE(UsbSelectDevice(-1));
  EXPECT_FALSE(UsbSelectDevice(std::numeric_limits<std::int32_t>::min()));
  EXPECT_STREQ(UsbGetSelectDeviceInfo().name, "Camera a");
  EXPECT_EQ(SelectedIndex(), 0);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(DeviceExportsTest, UsbSelectDeviceOfTheCountIsFalseWithoutTouchingTheSelection) {
  StartWithChip();
  EXPECT_FALSE(UsbSelectDevice(1));
  EXPECT_FALSE(UsbSelectDevice(std::numeric_limits<std::int32_t>::max()));
  EXPECT_STREQ(UsbGetSelectDeviceInfo().name, "Camera a");
  EXPECT_EQ(SelectedIndex(), 0);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(DeviceExportsTest, UsbSelectDeviceOfAnEmptyListIsFalse) {
  UsbIniDevice();
  EXPECT_FALSE(UsbSelectDevice(0));
}

TEST_F(DeviceExportsTest, UsbSelectDeviceIsTrueWhateverBecameOfTheOpening) {
  Camera broken = MakeCamera(u'b');
  broken.raise = [] { throw std::runtime_error("driver"); };
  script->cameras = {MakeCamera(u'a'), broken};
  UsbIniDevice();
  EXPECT_TRUE(UsbSelectDevice(0)) << "no vendor node";
  EXPECT_TRUE(UsbSelectDevice(1)) << "the opening failed";
  EXPECT_EQ(SelectedIndex(), 1);
  EXPECT_FALSE(UsbRegisterWrite(0, 0, 0));
}

TEST_F(DeviceExportsTest, UsbSelectDeviceLetsTheOpeningsMessageOut) {
  Camera broken = MakeCamera(u'b', chip);
  broken.raise = [] { throw "ERROR: gcap.pVCap->QueryInterface failed"; };
  script->cameras = {MakeCamera(u'a'), broken};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(0));
  try {
    UsbSelectDevice(1);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const char* message) {
    EXPECT_STREQ(message, "ERROR: gcap.pVCap->QueryInterface failed");
  }
  EXPECT_EQ(SelectedIndex(), 1) << "the selection has changed by then";
  EXPECT_STREQ(UsbGetSelectDeviceInfo().name, "Camera b");
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(DeviceExportsTest, UsbDestroyUSBReadsTheFeatureRegisterOnceMore) {
  StartWithChip();
  EXPECT_TRUE(UsbDestroyUSB());
  EXPECT_EQ(chip->Sent(1), kFeatureRead);
  EXPECT_EQ(borvan::GlobalInstance().Get(), nullptr);
}

TEST_F(DeviceExportsTest, UsbDestroyUSBIsTrueWithoutACameraOrAnAnswer) {
  UsbIniDevice();
  EXPECT_TRUE(UsbDestroyUSB());
  StartWithChip();
  chip->Intercept([](const Transfer&) { return static_cast<borvan::Result>(0x8007001F); });
  EXPECT_TRUE(UsbDestroyUSB());
}

TEST_F(DeviceExportsTest, UsbDestroyUSBReleasesNeitherMonikersNorTheChannel) {
  StartWithChip();
  const auto references = chip.use_count();
  const auto moniker = script->listed.at(0);
  const std::weak_ptr<borvan::BorvanUsb_Q7> instance = borvan::GlobalInstance().Get();
  UsbDestroyUSB();
  EXPECT_TRUE(instance.expired());
  EXPECT_FALSE(moniker.expired());
  EXPECT_EQ(chip.use_count(), references);
}

TEST_F(DeviceExportsTest, InstanceCanBeMadeAgainAfterUsbDestroyUSB) {
  StartWithChip();
  UsbDestroyUSB();
  StartWithChip();
  EXPECT_TRUE(UsbRegisterWrite(0x10, 0x5A, 0));
  EXPECT_EQ(chip->Register(0x10), 0x5AU);
}

}  // namespace
}  // namespace borvan_test
