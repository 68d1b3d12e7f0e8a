// Listing and selecting cameras through the exports, as the system's device enumerator finds them.

#include <cstring>

#include "rig.h"

namespace {

using test::CameraText;

// The first 120 bytes of a field up to its zero.
std::string Text(const char* field) {
  char text[121] = {};
  borvan_copy_text(field, text);
  return text;
}

std::string Digits(const char* field) {
  return std::string(field, 4);
}

CameraText Named(const std::string& path, const std::string& name, const std::string& registers) {
  CameraText camera;
  camera.path = path;
  camera.name = name;
  camera.more = R"(, "registers": )" + registers;
  return camera;
}

class LibraryCameras : public test::Rig {
 protected:
  void PlugInThree() {
    PlugIn({Named("vid_1234&pid_0001#one", "One", R"({"0x100": 1})"),
            Named("vid_1234&pid_0002#two", "Two", R"({"0x100": 2})"),
            Named("vid_1234&pid_0003#three", "Three", R"({"0x100": 3})")});
  }

  static std::uint32_t Register100() {
    std::uint32_t value = 0xEEEEEEEE;
    EXPECT_TRUE(UsbRegisterRead(0x100, &value, 0));
    return value;
  }
};

TEST_F(LibraryCameras, AreNoneWithoutAVideoInput) {
  EXPECT_EQ(UsbIniDevice(), 1);
  EXPECT_EQ(UsbGetDeviceNum(), 0);
  EXPECT_NE(UsbGetAllDeviceInfo(), nullptr);
  EXPECT_FALSE(UsbSelectDevice(0));
  EXPECT_TRUE(UsbUpdateDevice());
}

TEST_F(LibraryCameras, ThatWereNeverSelectedDescribeNothing) {
  UsbIniDevice();
  const UsbDeviceInfo info = UsbGetSelectDeviceInfo();
  unsigned char expected[248] = {};
  std::memcpy(expected + 240, "00000000", 8);  // the digits of two IDs of 0
  EXPECT_EQ(std::memcmp(&info, expected, sizeof expected), 0);
}

TEST_F(LibraryCameras, AreListedWithLowerCasePathNameAndDigits) {
  PlugIn({Named("VID_12F&PID_0A0B#Serial#{65E8}", "Front camera", "{}"),
          Named("vid_05ac&pid_1112#x", "Second", "{}")});
  EXPECT_EQ(UsbIniDevice(), 1) << "a complete walk ends with 1";
  ASSERT_EQ(UsbGetDeviceNum(), 2);
  const UsbDeviceInfo* const all = UsbGetAllDeviceInfo();
  ASSERT_NE(all, nullptr);
  EXPECT_EQ(Text(all[0].path), "\\\\?\\usb#vid_12f&pid_0a0b#serial#{65e8}");
  EXPECT_EQ(Text(all[0].name), "Front camera");
  // The four characters behind the marker are "12f&": the digits before the "&" count.
  EXPECT_EQ(Digits(all[0].vendor_id), "012F");
  EXPECT_EQ(Digits(all[0].product_id), "0A0B");
  EXPECT_EQ(Text(all[1].path), "\\\\?\\usb#vid_05ac&pid_1112#x");
  EXPECT_EQ(Text(all[1].name), "Second");
  EXPECT_EQ(Digits(all[1].vendor_id), "05AC");
  EXPECT_EQ(Digits(all[1].product_id), "1112");
}

TEST_F(LibraryCameras, AreDescribedInRecordsThatAreZeroBehindTheirTexts) {
  PlugIn({Named("vid_1234&pid_5678#a", "N", "{}")});
  UsbIniDevice();
  const UsbDeviceInfo* const all = UsbGetAllDeviceInfo();
  unsigned char expected[248] = {};
  std::memcpy(expected, "\\\\?\\usb#vid_1234&pid_5678#a", 27);  // path
  expected[120] = 'N';                                          // name
  std::memcpy(expected + 240, "12345678", 8);                   // vendor and product digits
  EXPECT_EQ(std::memcmp(all, expected, sizeof expected), 0);
}

TEST_F(LibraryCameras, ThatAreNotOnUsbAreNotListed) {
  CameraText built_in = Named("pci#ven_1234", "Built in", "{}");
  built_in.prefix = R"(\\\\?\\)";
  PlugIn({built_in, Named("vid_1234&pid_0001#one", "One", "{}")});
  EXPECT_EQ(UsbIniDevice(), 1);
  ASSERT_EQ(UsbGetDeviceNum(), 1);
  EXPECT_EQ(Text(UsbGetAllDeviceInfo()[0].name), "One");
}

TEST_F(LibraryCameras, WithNamesThatTheCodePageLacksAreListed) {
  if (GetACP() != 1252) {
    GTEST_SKIP() << "the name's bytes are those of code page 1252, this system has " << GetACP();
  }
  // UTF-8 of e acute, CJK "middle"
  PlugIn({Named("vid_1234&pid_0001#one", "caf\xC3\xA9 \xE4\xB8\xAD", "{}")});
  UsbIniDevice();
  ASSERT_EQ(UsbGetDeviceNum(), 1);
  EXPECT_EQ(Text(UsbGetAllDeviceInfo()[0].name), "caf\xE9 ?");
}

// A text that is longer than its field runs into the next one, which is then written over; nothing
// runs past the record.
TEST_F(LibraryCameras, WithTextsBeyondTheirFieldsStayWithinTheirRecords) {
  const std::string path = "\\\\?\\usb#vid_1234&pid_5678#" + std::string(124, 'p');  // 150 bytes
  ASSERT_EQ(path.size(), 150U);
  PlugIn({Named("vid_1234&pid_5678#" + std::string(124, 'p'), "N", "{}"),
          Named("vid_1234&pid_0002#two", std::string(200, 'n'), "{}"),
          Named("vid_1234&pid_0003#three", "Three", "{}")});
  UsbIniDevice();
  ASSERT_EQ(UsbGetDeviceNum(), 3);
  const UsbDeviceInfo* const all = UsbGetAllDeviceInfo();

  unsigned char first[248] = {};
  std::memcpy(first, path.data(), 150);
  std::memcpy(first + 120, "N", 2);  // the name with its zero, over the path's end
  std::memcpy(first + 240, "12345678", 8);
  EXPECT_EQ(std::memcmp(&all[0], first, sizeof first), 0);

  EXPECT_EQ(std::string(all[1].name, 120), std::string(120, 'n'));
  EXPECT_EQ(Digits(all[1].vendor_id), "1234") << "the digits are written last";
  EXPECT_EQ(Digits(all[1].product_id), "0002");
  EXPECT_EQ(Text(all[2].path), "\\\\?\\usb#vid_1234&pid_0003#three");
}

TEST_F(LibraryCameras, AreSelectedByIndexAndAnswerEachForItself) {
  PlugInThree();
  UsbIniDevice();
  ASSERT_EQ(UsbGetDeviceNum(), 3);
  EXPECT_TRUE(UsbSelectDevice(2));
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().name), "Three");
  EXPECT_EQ(Register100(), 3U);
  EXPECT_TRUE(UsbSelectDevice(0));
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().name), "One");
  EXPECT_EQ(Register100(), 1U);
}

TEST_F(LibraryCameras, OutsideTheListAreRefusedAndTheSelectionStays) {
  PlugInThree();
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(1));
  for (const std::int32_t index : {-1, 3, 4, INT32_MAX, INT32_MIN}) {
    EXPECT_FALSE(UsbSelectDevice(index)) << index;
    EXPECT_EQ(Text(UsbGetSelectDeviceInfo().name), "Two") << index;
    EXPECT_EQ(Register100(), 2U) << index;
  }
}

TEST_F(LibraryCameras, ThatAreUnpluggedLeaveTheListWithTheNextUpdate) {
  PlugInThree();
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(2));
  Control("unplug One");
  EXPECT_EQ(UsbGetDeviceNum(), 3) << "the list is that of the last look";
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(UsbGetDeviceNum(), 2);
  EXPECT_EQ(Text(UsbGetAllDeviceInfo()[1].name), "Three");
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().name), "Three");
  EXPECT_EQ(Register100(), 3U) << "the open channel stays open";
  EXPECT_FALSE(UsbSelectDevice(2));

  Control("plug One");
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(UsbGetDeviceNum(), 3);
  EXPECT_EQ(Text(UsbGetAllDeviceInfo()[0].name), "One");
  EXPECT_EQ(Register100(), 3U);
}

TEST_F(LibraryCameras, ThatAreUnpluggedWhileSelectedFailUntilSelectedAgain) {
  PlugInThree();
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(1));
  Control("unplug Two");
  std::uint32_t value = 0xEEEEEEEE;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_EQ(value, 0xEEEEEEEEU);
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(UsbGetDeviceNum(), 2);
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().name), "Two") << "its description stays";

  Control("plug Two");
  EXPECT_TRUE(UsbUpdateDevice());
  ASSERT_TRUE(UsbSelectDevice(1));
  EXPECT_EQ(Register100(), 2U);
}

TEST_F(LibraryCameras, AllGoneClearTheSelection) {
  UseCamera();
  Control("unplug 0");
  EXPECT_TRUE(UsbUpdateDevice());
  EXPECT_EQ(UsbGetDeviceNum(), 0);
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().path), "");
  EXPECT_EQ(Digits(UsbGetSelectDeviceInfo().vendor_id), "0000");
}

TEST_F(LibraryCameras, AreListedAnewByASecondInitialisationThatSelectsNone) {
  UseCamera();
  EXPECT_EQ(UsbIniDevice(), 1);
  EXPECT_EQ(UsbGetDeviceNum(), 1);
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().path), "");
  std::uint32_t value = 0xEEEEEEEE;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0)) << "no channel is open before a selection";
  EXPECT_EQ(value, 0xEEEEEEEEU);
}

TEST_F(LibraryCameras, WithoutVendorNodeAreSelectedAndEveryAccessFails) {
  CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  UseCamera(camera);
  std::uint32_t value = 0xEEEEEEEE;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_FALSE(UsbRegisterWrite(0x100, 1, 0));
  EXPECT_FALSE(UsbI2cRead(0x20, 0, &value, 0, 0));
  EXPECT_FALSE(UsbI2cWrite(0x20, 0, 1, 0, 0));
  EXPECT_FALSE(UsbFlashWrite(0, 1));
  EXPECT_FALSE(UsbFlashErase(0));
  EXPECT_EQ(value, 0xEEEEEEEEU);
  EXPECT_TRUE(UsbFlashRead(0, &value)) << "a flash read tells by its value only";
  EXPECT_EQ(value, 0U);
}

// Transfers go to node 2 whatever id the vendor node has.
TEST_F(LibraryCameras, WhoseNodeTwoIsNoVendorNodeRefuseEveryTransfer) {
  CameraText camera;
  camera.nodes = R"("camera-terminal", "vendor", "processing")";
  UseCamera(camera);
  std::uint32_t value = 0xEEEEEEEE;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_FALSE(UsbRegisterWrite(0x100, 1, 0));
}

// The library and this host are linked each with a C++ runtime of its own.
TEST_F(LibraryCameras, ThatCannotBeBoundRaiseTheMessageInTheHost) {
  CameraText camera;
  PlugIn({camera});
  UsbIniDevice();
  ASSERT_EQ(UsbGetDeviceNum(), 1);
  Configure({});  // still registered, but the device behind it is gone
  std::string message;
  try {
    UsbSelectDevice(0);
  } catch (const char* text) {
    message = text;
  }
  EXPECT_EQ(message, "ERROR: gcap.pmVideo->BindToObject failed");
  EXPECT_EQ(Text(UsbGetSelectDeviceInfo().path), "\\\\?\\usb#vid_1234&pid_0001#one")
      << "the selection has changed all the same";
  std::uint32_t value = 0;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  Configure({camera});
}

}  // namespace
