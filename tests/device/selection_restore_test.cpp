// What a re-enumeration does to the selection.

#include <gtest/gtest.h>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

using Outcome = borvan::VideoInputListing::Outcome;

class SelectionRestoreTest : public DeviceTest {
 protected:
  static std::vector<Camera> Cameras(const std::string& letters) {
    std::vector<Camera> cameras;
    for (const char letter : letters) {
      cameras.push_back(MakeCamera(static_cast<char16_t>(letter)));
    }
    return cameras;
  }

  void ExpectClearedSelection() {
    EXPECT_EQ(device->GetSelectedIndex(), 0);
    const auto selected = device->GetSelectedDevice();
    EXPECT_EQ(selected.path, "");
    EXPECT_EQ(selected.name, "");
    EXPECT_EQ(selected.vid, 0);
    EXPECT_EQ(selected.pid, 0);
    EXPECT_EQ(selected.moniker, nullptr);
  }
};

TEST_F(SelectionRestoreTest, NothingIsSelectedByEnumerating) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  ExpectClearedSelection();
  List({MakeCamera(u'b'), MakeCamera(u'a')});
  ExpectClearedSelection();
}

TEST_F(SelectionRestoreTest, SelectedCameraIsFollowedByItsPath) {
  struct RestoreCase {
    const char* what;
    std::string before;  // the letters of the cameras
    std::uint32_t selected;
    std::string after;
    std::int32_t index;
  };
  const RestoreCase cases[] = {
      {"it moved from 2 to 0", "abc", 2, "cab", 0},
      {"it moved up", "ab", 0, "xya", 2},
      {"the first of several entries with its path is taken", "a", 0, "baa", 1},
      {"the index stays where its path stands, though it stands earlier too", "ba", 1, "aa", 1},
      {"an index beyond the new list stays, though it is listed elsewhere", "abc", 2, "ca", 2},
      {"the index stays when it is gone", "abc", 1, "acd", 1},
  };
  for (const RestoreCase& each : cases) {
    SCOPED_TRACE(each.what);
    List(Cameras(each.before));
    device->SelectDevice(each.selected);
    List(Cameras(each.after));
    EXPECT_EQ(device->GetSelectedIndex(), each.index);
    EXPECT_EQ(device->GetSelectedDevice().name,
              std::string("Camera ") + each.before.at(each.selected));
  }
}

TEST_F(SelectionRestoreTest, CameraIsFoundByThePathAsItIsListed) {
  List({CameraAt(u"USB#VID_1234#A"), MakeCamera(u'b')});
  device->SelectDevice(0);
  List({MakeCamera(u'b'), CameraAt(u"usb#vid_1234#a")});
  EXPECT_EQ(device->GetSelectedIndex(), 1);
}

TEST_F(SelectionRestoreTest, SelectedCopyIsNotRefreshed) {
  List({CameraAt(u"usb#vid_1234&pid_5678", u"Old name"), MakeCamera(u'b')});
  device->SelectDevice(0);
  List({MakeCamera(u'b'), CameraAt(u"usb#vid_1234&pid_5678", u"New name")});
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  EXPECT_EQ(device->GetSelectedDevice().name, "Old name");
  EXPECT_EQ(device->GetDeviceList().at(1).name, "New name");
}

TEST_F(SelectionRestoreTest, ReturnedSelectionIsACopy) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  device->SelectDevice(1);
  const auto copy = device->GetSelectedDevice();
  device->SelectDevice(0);
  List({});
  EXPECT_EQ(copy.path, "\\\\?\\usb#vid_1234&pid_5678#b");
  EXPECT_EQ(copy.name, "Camera b");
  EXPECT_EQ(copy.vid, 0x1234);
  EXPECT_EQ(copy.pid, 0x5678);
}

TEST_F(SelectionRestoreTest, SelectedCopyHoldsNoReferenceToItsMoniker) {
  List({MakeCamera(u'a')});
  device->SelectDevice(0);
  const auto selected = script->listed.at(0);
  ASSERT_FALSE(selected.expired());
  EXPECT_EQ(device->GetSelectedDevice().moniker, selected.lock());
  List({MakeCamera(u'b')});
  EXPECT_TRUE(selected.expired());
}

TEST_F(SelectionRestoreTest, EmptyCategoryLeavesIndexZeroAndAClearedSelection) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  device->SelectDevice(1);
  script->outcome = Outcome::kNoCategory;
  device->EnumerateDevices();
  ExpectClearedSelection();
}

TEST_F(SelectionRestoreTest, WalkWithoutUsbCamerasLeavesIndexZeroAndAClearedSelection) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  device->SelectDevice(1);
  List({CameraAt(u"\\\\?\\pci#ven_8086")});
  ExpectClearedSelection();
}

TEST_F(SelectionRestoreTest, SystemWithoutDeviceEnumeratorLeavesTheSelectionAlone) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  device->SelectDevice(1);
  script->outcome = Outcome::kNoDeviceEnumerator;
  device->EnumerateDevices();
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  EXPECT_EQ(device->GetSelectedDevice().name, "Camera b");
}

TEST_F(SelectionRestoreTest, ReEnumeratingNeitherClosesNorReopensTheChannel) {
  const auto chip = std::make_shared<MemoryChip>();
  const auto other = std::make_shared<MemoryChip>();
  chip->PutRegister(0x10, 0x77);
  List({MakeCamera(u'a', chip)});
  device->SelectDevice(0);
  // The path now belongs to another node, and then to no one.
  List({MakeCamera(u'a', other)});
  std::string value;
  EXPECT_EQ(device->RegisterRead("10", value, 0), 0);
  EXPECT_EQ(value, "77");
  List({});
  value.clear();
  EXPECT_EQ(device->RegisterRead("10", value, 0), 0);
  EXPECT_EQ(value, "77");
  EXPECT_TRUE(other->Transfers().empty());
}

}  // namespace
}  // namespace borvan_test
