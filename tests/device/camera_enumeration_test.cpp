// Which devices of the video-input category are listed, and how they are described.

#include <gtest/gtest.h>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

using Outcome = borvan::VideoInputListing::Outcome;

class CameraEnumerationTest : public DeviceTest {
 protected:
  borvan::DeviceEntry OnlyEntry(Camera camera) {
    List({std::move(camera)});
    const auto list = device->GetDeviceList();
    EXPECT_EQ(list.size(), 1U);
    return list.empty() ? borvan::DeviceEntry{} : list.front();
  }
};

TEST_F(CameraEnumerationTest, UsbCameraIsDescribedByPathNameAndIds) {
  const auto entry =
      OnlyEntry(CameraAt(u"\\\\?\\usb#vid_04f2&pid_b6d9&mi_00#7&1#{65e8773d}", u"Desk camera"));
  EXPECT_EQ(entry.path, "\\\\?\\usb#vid_04f2&pid_b6d9&mi_00#7&1#{65e8773d}");
  EXPECT_EQ(entry.name, "Desk camera");
  EXPECT_EQ(entry.vid, 0x04F2);
  EXPECT_EQ(entry.pid, 0xB6D9);
  EXPECT_EQ(entry.moniker, script->listed.at(0).lock());
}

TEST_F(CameraEnumerationTest, DeviceWithoutUsbInItsPathIsNeverListed) {
  List({CameraAt(u"\\\\?\\root#image#vid_1234&pid_5678"), CameraAt(u"usb_vid_1234"), CameraAt(u""),
        MakeCamera(u'a'), CameraAt(u"\\\\?\\pci#ven_8086")});
  ASSERT_EQ(device->GetDeviceCount(), 1);
  EXPECT_EQ(device->GetDeviceList().at(0).name, "Camera a");
}

TEST_F(CameraEnumerationTest, CamerasOfEveryVendorAreListed) {
  List({CameraAt(u"usb#vid_0001&pid_0002"), CameraAt(u"usb#vid_ffff&pid_fffe")});
  ASSERT_EQ(device->GetDeviceCount(), 2);
  EXPECT_EQ(device->GetDeviceList().at(1).vid, 0xFFFF);
  EXPECT_EQ(device->GetDeviceList().at(1).pid, 0xFFFE);
}

TEST_F(CameraEnumerationTest, UpperCaseMarkersAreFoundBecauseThePathIsLoweredFirst) {
  const auto entry = OnlyEntry(CameraAt(u"\\\\?\\USB#VID_04F2&PID_B6D9#X", u"Desk CAMERA"));
  EXPECT_EQ(entry.path, "\\\\?\\usb#vid_04f2&pid_b6d9#x");
  EXPECT_EQ(entry.name, "Desk CAMERA");
  EXPECT_EQ(entry.vid, 0x04F2);
  EXPECT_EQ(entry.pid, 0xB6D9);
}

TEST_F(CameraEnumerationTest, OnlyTheLettersAToZAreLowered) {
  OnlyEntry(CameraAt(u"USB#VID_1234&PID_5678#\u00C4\u0130"));
  ASSERT_FALSE(script->converted.empty());
  EXPECT_EQ(script->converted.front(), u"usb#vid_1234&pid_5678#\u00C4\u0130");
}

TEST_F(CameraEnumerationTest, IdsAreTheFourCharactersBehindTheFirstMarker) {
  struct IdCase {
    std::u16string path;
    unsigned vid;
    unsigned pid;
  };
  const IdCase cases[] = {
      {u"usb#vid_123456&pid_abcdef", 0x1234, 0xABCD},
      {u"usb#vid_1111&pid_2222#vid_3333&pid_4444", 0x1111, 0x2222},
      // They end at the first character that is no digit, and where the path does.
      {u"usb#vid_1g34&pid_&567", 0x1, 0},
      {u"usb#vid_", 0, 0},
      {u"usb#vid_4", 0x4, 0},
      {u"usb#vid_04f", 0x04F, 0},
      {u"usb#pid_", 0, 0},
      // A missing marker takes the characters 3 to 6, and leaves the other alone.
      {u"usb#", 0, 0},  // 3 is the "#"
      {u"abc1f2ausb#", 0x1F2A, 0x1F2A},
      {u"abc1f2ausb#vid_0bda", 0x0BDA, 0x1F2A},
      {u"abc1f2ausb#pid_0bda", 0x1F2A, 0x0BDA},
  };
  for (const IdCase& each : cases) {
    const auto entry = OnlyEntry(CameraAt(each.path));
    EXPECT_EQ(entry.vid, each.vid) << entry.path;
    EXPECT_EQ(entry.pid, each.pid) << entry.path;
  }
}

TEST_F(CameraEnumerationTest, DeviceWithoutReadablePathOrNameIsSkipped) {
  Camera no_path = MakeCamera(u'a');
  no_path.path.reset();
  Camera no_name = MakeCamera(u'b');
  no_name.friendly_name.reset();
  List({no_path, no_name, MakeCamera(u'c')});
  ASSERT_EQ(device->GetDeviceCount(), 1);
  EXPECT_EQ(device->GetDeviceList().at(0).name, "Camera c");
}

TEST_F(CameraEnumerationTest, EmptyNameIsAName) {
  EXPECT_EQ(OnlyEntry(CameraAt(u"usb#vid_1234&pid_5678", u"")).name, "");
}

TEST_F(CameraEnumerationTest, NameThatTheCodePageLacksIsNotDropped) {
  EXPECT_EQ(OnlyEntry(CameraAt(u"usb#vid_1234&pid_5678", u"K\u00E4m\u4E2D")).name, "K?m?");
}

struct VersionCase {
  std::optional<borvan::SystemVersion> version;
  bool path_is_name;
};

TEST_F(CameraEnumerationTest, SystemsBeforeSixPointZeroShowThePathAsName) {
  const VersionCase cases[] = {
      {borvan::SystemVersion{5, 1}, true},
      {borvan::SystemVersion{5, 9}, true},
      {borvan::SystemVersion{4, 90}, false},  // 4 + 9.0: the minor number counts a tenth each
      {borvan::SystemVersion{5, 10}, false},  // 5 + 1.0
      {borvan::SystemVersion{6, 0}, false},
      {borvan::SystemVersion{10, 0}, false},
      {std::nullopt, false},
  };
  for (const VersionCase& tried : cases) {
    script->version = tried.version;
    const auto entry = OnlyEntry(CameraAt(u"USB#VID_1234", u"Camera"));
    const std::string version = tried.version ? std::to_string(tried.version->major) + "." +
                                                    std::to_string(tried.version->minor)
                                              : "unknown";
    EXPECT_EQ(entry.name, tried.path_is_name ? "usb#vid_1234" : "Camera") << version;
  }
}

TEST_F(CameraEnumerationTest, OldSystemsSkipCamerasWithoutReadableNameToo) {
  script->version = borvan::SystemVersion{5, 1};
  Camera no_name = MakeCamera(u'a');
  no_name.friendly_name.reset();
  List({no_name});
  EXPECT_EQ(device->GetDeviceCount(), 0);
}

TEST_F(CameraEnumerationTest, ListKeepsTheOrderOfTheCategory) {
  List({MakeCamera(u'c'), MakeCamera(u'a'), MakeCamera(u'b')});
  ASSERT_EQ(device->GetDeviceCount(), 3);
  const auto list = device->GetDeviceList();
  EXPECT_EQ(list.at(0).name, "Camera c");
  EXPECT_EQ(list.at(1).name, "Camera a");
  EXPECT_EQ(list.at(2).name, "Camera b");
}

TEST_F(CameraEnumerationTest, EveryOutcomeReturnsTheSystemsAnswer) {
  script->outcome = Outcome::kWalked;
  script->listing_result = 1;
  EXPECT_EQ(device->EnumerateDevices(), 1);
  script->listing_result = static_cast<borvan::Result>(0x80070005);
  EXPECT_EQ(device->EnumerateDevices(), static_cast<borvan::Result>(0x80070005));
  script->outcome = Outcome::kNoCategory;
  script->listing_result = 1;
  EXPECT_EQ(device->EnumerateDevices(), 1);
  script->listing_result = static_cast<borvan::Result>(0x8007000E);
  EXPECT_EQ(device->EnumerateDevices(), static_cast<borvan::Result>(0x8007000E));
  script->outcome = Outcome::kNoDeviceEnumerator;
  script->listing_result = static_cast<borvan::Result>(0x80040154);
  EXPECT_EQ(device->EnumerateDevices(), static_cast<borvan::Result>(0x80040154));
}

TEST_F(CameraEnumerationTest, WalkThatEndsInAFailureKeepsWhatItFound) {
  script->listing_result = static_cast<borvan::Result>(0x80070005);
  List({MakeCamera(u'a')});
  EXPECT_EQ(device->GetDeviceCount(), 1);
}

TEST_F(CameraEnumerationTest, ListIsEmptyAfterEveryOutcomeWithoutCameras) {
  for (const Outcome outcome :
       {Outcome::kNoDeviceEnumerator, Outcome::kNoCategory, Outcome::kWalked}) {
    List({MakeCamera(u'a')});
    ASSERT_EQ(device->GetDeviceCount(), 1);
    script->cameras.clear();
    script->outcome = outcome;
    device->EnumerateDevices();
    EXPECT_EQ(device->GetDeviceCount(), 0) << static_cast<int>(outcome);
    EXPECT_TRUE(device->GetDeviceList().empty()) << static_cast<int>(outcome);
  }
}

TEST_F(CameraEnumerationTest, ListHoldsTheMonikersUntilItIsRebuilt) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  const auto former = script->listed;
  ASSERT_EQ(former.size(), 2U);
  EXPECT_FALSE(former.at(0).expired());
  EXPECT_FALSE(former.at(1).expired());
  List({MakeCamera(u'a')});
  EXPECT_TRUE(former.at(0).expired());
  EXPECT_TRUE(former.at(1).expired());
  EXPECT_FALSE(script->listed.at(0).expired());
}

TEST_F(CameraEnumerationTest, MonikersOfSkippedDevicesAreReleasedAtOnce) {
  List({CameraAt(u"\\\\?\\pci#ven_8086"), MakeCamera(u'a')});
  EXPECT_TRUE(script->listed.at(0).expired());
  EXPECT_FALSE(script->listed.at(1).expired());
}

TEST_F(CameraEnumerationTest, MonikersAreReleasedWhenTheCategoryIsGone) {
  for (const Outcome outcome : {Outcome::kNoDeviceEnumerator, Outcome::kNoCategory}) {
    List({MakeCamera(u'a')});
    const auto former = script->listed.at(0);
    script->outcome = outcome;
    device->EnumerateDevices();
    EXPECT_TRUE(former.expired()) << static_cast<int>(outcome);
  }
}

TEST_F(CameraEnumerationTest, ReturnedListIsACopyThatAReEnumerationLeavesAlone) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  auto copy = device->GetDeviceList();
  List({});
  ASSERT_EQ(copy.size(), 2U);
  EXPECT_EQ(copy.at(1).name, "Camera b");
  copy.clear();
  List({MakeCamera(u'c')});
  EXPECT_EQ(device->GetDeviceCount(), 1);
}

}  // namespace
}  // namespace borvan_test
