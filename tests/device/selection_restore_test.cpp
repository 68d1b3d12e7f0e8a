// What a re-enumeration does to the selection.

#include <gtest/gtest.h>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

using Outcome = borvan::VideoInputListing::Outcome;

class SelectionRestoreTest : public DeviceTest {
 protected:
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

TEST_F(SelectionRestoreTest, CameraThatMovedFromTwoToZeroIsFollowed) {
  List({MakeCamera(u'a'), MakeCamera(u'b'), MakeCamera(u'c')});
  device->SelectDevice(2);
  List({MakeCamera(u'c'), MakeCamera(u'a'), MakeCamera(u'b')});
  EXPECT_EQ(device->GetSelectedIndex(), 0);
}

TEST_F(SelectionRestoreTest, CameraThatMovedUpIsFollowed) {
  List({MakeCamera(u'a'), MakeCamera(u'b')});
  device->SelectDevice(0);
  List({MakeCamera(u'x'), MakeCamera(u'y'), MakeCamera(u'a')});
  EXPECT_EQ(device->GetSelectedIndex(), 2);
}

TEST_F(SelectionRestoreTest, FirstOfSeveralEntriesWithTheSamePathIsTaken) {
  List({MakeCamera(u'a')});
  device->SelectDevice(0);
  List({MakeCamera(u'b'), MakeCamera(u'a'), MakeCamera(u'a')});
  EXPECT_EQ(device->GetSelectedIndex(), 1);
}

TEST_F(SelectionRestoreTest, IndexStaysWhereTheSamePathStandsEvenWhenItStandsEarlierToo) {
  List({MakeCamera(u'b'), MakeCamera(u'a')});
  device->SelectDevice(1);
  List({MakeCamera(u'a'), MakeCamera(u'a')});
  EXPECT_EQ(device->GetSelectedIndex(), 1);
}

TEST_F(SelectionRestoreTest, IndexBeyondTheNewListStaysThoughTheCameraIsListedElsewhere) {
  List({MakeCamera(u'a'), MakeCamera(u'b'), MakeCamera(u'c')});
  device->SelectDevice(2);
  List({MakeCamera(u'c'), MakeCamera(u'a')});
  EXPECT_EQ(device->GetSelectedIndex(), 2);
  EXPECT_EQ(device->GetSelectedDevice().name, "Camera c");
}

TEST_F(SelectionRestoreTest, IndexStaysWhenTheCameraIsGone) {
  List({MakeCamera(u'a'), MakeCamera(u'b'), MakeCamera(u'c')});
  device->SelectDevice(1);
  List({MakeCamera(u'a'), MakeCamera(u'c'), MakeCamera(u'd')});
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  EXPECT_EQ(device->GetSelectedDevice().name, "Camera b");
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
