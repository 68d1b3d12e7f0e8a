// The 248-byte record of a camera.

#include <algorithm>
#include <array>
#include <cstring>

#include "api/api_fixture.h"
#include "api/device_info.h"

namespace borvan_test {
namespace {

using Record = std::array<char, 248>;

Record RecordOf(const std::string& path, const std::string& name, std::int32_t vid,
                std::int32_t pid) {
  borvan::DeviceEntry entry;
  entry.path = path;
  entry.name = name;
  entry.vid = vid;
  entry.pid = pid;
  const UsbDeviceInfo info = borvan::MakeDeviceInfo(entry);
  Record record{};
  static_assert(sizeof(info) == sizeof(record));
  std::memcpy(record.data(), &info, sizeof(info));
  return record;
}

std::string Part(const Record& record, std::size_t offset, std::size_t size) {
  return {record.data() + offset, size};
}

// A text of different characters, so that a shifted one shows.
std::string LongText(std::size_t size, char first) {
  std::string text(size, ' ');
  for (std::size_t i = 0; i < size; ++i) {
    text[i] = static_cast<char>(first + static_cast<char>(i % 23));
  }
  return text;
}

TEST(DeviceInfoTest, FieldsStandAtTheirOffsetsAndTheRestIsZero) {
  const Record record = RecordOf("usb#a", "Camera", 0x04F2, 0xB6D9);
  Record expected{};
  std::memcpy(expected.data() + 0, "usb#a", 5);
  std::memcpy(expected.data() + 120, "Camera", 6);
  std::memcpy(expected.data() + 240, "04F2", 4);
  std::memcpy(expected.data() + 244, "B6D9", 4);
  EXPECT_EQ(record, expected);
}

TEST(DeviceInfoTest, VendorId0x12fYieldsTheCharacters012FDirectlyBeforeTheProductId) {
  const Record record = RecordOf("", "", 0x12F, 0xABCD);
  EXPECT_EQ(Part(record, 240, 8), "012FABCD");
}

TEST(DeviceInfoTest, IdsShowTheirLow16Bits) {
  EXPECT_EQ(Part(RecordOf("", "", 0, 0x7FFFFFFF), 240, 8), "0000FFFF");
  EXPECT_EQ(Part(RecordOf("", "", -1, 0x12345678), 240, 8), "FFFF5678");
  EXPECT_EQ(Part(RecordOf("", "", -0x1AB, 0x10000), 240, 8), "FE550000");
}

TEST(DeviceInfoTest, TextsOf119CharactersKeepTheirTerminator) {
  const Record record = RecordOf(LongText(119, 'a'), LongText(119, 'A'), 0x1234, 0x5678);
  EXPECT_EQ(Part(record, 0, 119), LongText(119, 'a'));
  EXPECT_EQ(record[119], '\0');
  EXPECT_EQ(Part(record, 120, 119), LongText(119, 'A'));
  EXPECT_EQ(record[239], '\0');
  EXPECT_EQ(Part(record, 240, 8), "12345678");
}

TEST(DeviceInfoTest, TextsOf120CharactersFillTheirFieldWithoutATerminator) {
  const Record record = RecordOf(LongText(120, 'a'), LongText(120, 'A'), 0x1234, 0x5678);
  EXPECT_EQ(Part(record, 0, 120), LongText(120, 'a'));
  EXPECT_EQ(Part(record, 120, 120), LongText(120, 'A'));
  EXPECT_EQ(Part(record, 240, 8), "12345678");
}

TEST(DeviceInfoTest, LongerPathRunsIntoTheNameWhichIsWrittenOverIt) {
  const std::string path = LongText(130, 'a');
  const Record record = RecordOf(path, "Camera", 0x1234, 0x5678);
  EXPECT_EQ(Part(record, 0, 120), path.substr(0, 120));
  EXPECT_EQ(Part(record, 120, 7), std::string("Camera\0", 7));
  EXPECT_EQ(Part(record, 127, 3), path.substr(127, 3));
  EXPECT_EQ(Part(record, 130, 110), std::string(110, '\0'));
  EXPECT_EQ(Part(record, 240, 8), "12345678");
}

TEST(DeviceInfoTest, LongerNameRunsIntoTheIdsWhichAreWrittenOverIt) {
  const std::string name = LongText(130, 'A');
  const Record record = RecordOf("usb#a", name, 0x1234, 0x5678);
  EXPECT_EQ(Part(record, 120, 120), name.substr(0, 120));
  EXPECT_EQ(Part(record, 240, 8), "12345678");
}

TEST(DeviceInfoTest, TextsLongerThanTheRecordEndWithIt) {
  for (const std::size_t size : {247U, 248U, 249U, 300U, 5000U}) {
    SCOPED_TRACE(size);
    const std::string path = LongText(size, 'a');
    const std::string name = LongText(size, 'A');
    const Record record = RecordOf(path, name, 0x1234, 0x5678);
    EXPECT_EQ(Part(record, 0, 120), path.substr(0, 120));
    EXPECT_EQ(Part(record, 120, 120), name.substr(0, 120));
    EXPECT_EQ(Part(record, 240, 8), "12345678");
  }
}

// A shortened text still has its former characters behind its terminator.
TEST(DeviceInfoTest, NothingBehindATextsTerminatorIsCopied) {
  borvan::DeviceEntry entry;
  entry.name = "CameraXYZ";
  entry.name.resize(6);
  const UsbDeviceInfo info = borvan::MakeDeviceInfo(entry);
  EXPECT_EQ(std::string(info.name, 10), std::string("Camera\0\0\0\0", 10));
}

TEST(DeviceInfoTest, EmptyNameEndsALongPathsTail) {
  const std::string path = LongText(300, 'a');
  const Record record = RecordOf(path, "", 0x1234, 0x5678);
  EXPECT_EQ(record[120], '\0');
  EXPECT_EQ(Part(record, 121, 119), path.substr(121, 119));
  EXPECT_EQ(Part(record, 240, 8), "12345678");
}

class DeviceInfoExportsTest : public ApiTest {};

TEST_F(DeviceInfoExportsTest, AllCamerasAreDescribedInTheOrderOfTheList) {
  Camera other;
  other.path = u"\\\\?\\USB#VID_012F&PID_00A0#X";
  other.friendly_name = u"Other";
  script->cameras = {MakeCamera(u'b'), other, MakeCamera(u'a')};
  UsbIniDevice();
  // The library's and this program's array allocator are the same here.
  const std::unique_ptr<UsbDeviceInfo[]> all(UsbGetAllDeviceInfo());
  ASSERT_NE(all, nullptr);
  EXPECT_STREQ(all[0].path, "\\\\?\\usb#vid_1234&pid_5678#b");
  EXPECT_STREQ(all[0].name, "Camera b");
  EXPECT_EQ(std::string(all[0].vendor_id, 8), "12345678");
  EXPECT_STREQ(all[1].path, "\\\\?\\usb#vid_012f&pid_00a0#x");
  EXPECT_STREQ(all[1].name, "Other");
  EXPECT_EQ(std::string(all[1].vendor_id, 4), "012F");
  EXPECT_EQ(std::string(all[1].product_id, 4), "00A0");
  EXPECT_STREQ(all[2].name, "Camera a");
}

TEST_F(DeviceInfoExportsTest, EmptyListGivesAValidArrayWithoutRecords) {
  UsbIniDevice();
  const std::unique_ptr<UsbDeviceInfo[]> all(UsbGetAllDeviceInfo());
  EXPECT_NE(all, nullptr);
}

TEST_F(DeviceInfoExportsTest, EachCallGivesAnArrayOfItsOwn) {
  script->cameras = {MakeCamera(u'a')};
  UsbIniDevice();
  const std::unique_ptr<UsbDeviceInfo[]> first(UsbGetAllDeviceInfo());
  const std::unique_ptr<UsbDeviceInfo[]> second(UsbGetAllDeviceInfo());
  EXPECT_NE(first.get(), second.get());
  UsbDestroyUSB();
  EXPECT_STREQ(first[0].name, "Camera a");
}

TEST_F(DeviceInfoExportsTest, SelectedCameraIsDescribedAsItWasWhenSelected) {
  script->cameras = {MakeCamera(u'a'), MakeCamera(u'b')};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(1));
  script->cameras = {MakeCamera(u'c'), MakeCamera(u'd')};
  ASSERT_TRUE(UsbUpdateDevice());
  const UsbDeviceInfo info = UsbGetSelectDeviceInfo();
  EXPECT_STREQ(info.path, "\\\\?\\usb#vid_1234&pid_5678#b");
  EXPECT_STREQ(info.name, "Camera b");
  EXPECT_EQ(std::string(info.vendor_id, 4), "1234");
  EXPECT_EQ(std::string(info.product_id, 4), "5678");
}

TEST_F(DeviceInfoExportsTest, NoSelectionIsEmptyTextsAndZeroIds) {
  script->cameras = {MakeCamera(u'a')};
  UsbIniDevice();
  const UsbDeviceInfo info = UsbGetSelectDeviceInfo();
  Record record{};
  std::memcpy(record.data(), &info, sizeof(info));
  Record expected{};
  std::memcpy(expected.data() + 240, "00000000", 8);
  EXPECT_EQ(record, expected);
}

}  // namespace
}  // namespace borvan_test
