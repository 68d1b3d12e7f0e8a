// A host's session from start to end that makes every call of the library once.

#include <cstring>

#include "lists_rig.h"

namespace {

using test::Bytes;
using test::kDone;
using test::kUntouched;
using test::Line;
using test::ProgressBecomes;
using test::Text;

class LibrarySession : public test::ListsRig, public testing::WithParamInterface<bool> {
 protected:
  static void SelectFirst() {
    ASSERT_GE(UsbIniDevice(), 0);
    ASSERT_TRUE(UsbSelectDevice(0));
  }

  static void FindCamera() {
    ASSERT_TRUE(UsbUpdateDevice());
    ASSERT_EQ(UsbGetDeviceNum(), 1);
    const UsbDeviceInfo* const all = UsbGetAllDeviceInfo();
    ASSERT_NE(all, nullptr);
    EXPECT_STREQ(all[0].name, "Camera");
    const UsbDeviceInfo selected = UsbGetSelectDeviceInfo();
    EXPECT_EQ(std::memcmp(&selected, all, sizeof selected), 0);
  }

  static void MakeSingleAccesses() {
    std::uint32_t value = kUntouched;
    EXPECT_TRUE(UsbRegisterWrite(0x80001234, 0x11223344, 1));
    EXPECT_TRUE(UsbRegisterRead(0x80001234, &value, 1));
    EXPECT_EQ(value, 0x11223344U);
    EXPECT_TRUE(UsbI2cWrite(0x40, 0x3012, 0xABCD, 2, 0));
    EXPECT_TRUE(UsbI2cRead(0x40, 0x3012, &value, 2, 0));
    EXPECT_EQ(value, 0xABCDU);
    EXPECT_TRUE(UsbFlashWrite(0x1000, 0x01020304));
    EXPECT_TRUE(UsbFlashRead(0x1000, &value));
    EXPECT_EQ(value, 0x01020304U);
    EXPECT_TRUE(UsbFlashErase(0x1000));
    EXPECT_TRUE(UsbFlashRead(0x1000, &value));
    EXPECT_EQ(value, 0xFFFFFFFFU);
  }

  void RunJobs() {
    const Bytes image = test::Pattern(5'000);
    EXPECT_TRUE(UsbFlashWriteFile(MakeFile("image.bin", image).c_str(), 0x2000));
    EXPECT_TRUE(ProgressBecomes(kDone));
    SelectFirst();
    EXPECT_TRUE(UsbFlashQuickReadFile(File("dump.bin").c_str(), 0x2000, 0x2000 + 4'999));
    EXPECT_TRUE(ProgressBecomes(kDone));
    EXPECT_EQ(FinishedFile(File("dump.bin")), image);

    WriteRegisters(Line(0xFFFD, 0) + Line(0x100, 0x5A) + Line(0x101, 0xA5));
    EXPECT_EQ(RegisterRun("registers.bin", 0x100, 0x101), (Bytes{0x5A, 0xA5}));
    WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x3012, 0x5A));
    EXPECT_EQ(Text(I2cRun("sensor.txt", 0x30, 1, 0x3012, 0x3012)), "0x3012,0x5a,\r\n");
  }
};

TEST_P(LibrarySession, MakesEveryCall) {
  UseSensors(GetParam());
  FindCamera();
  MakeSingleAccesses();
  RunJobs();
  EXPECT_TRUE(UsbDestroyUSB());
  EXPECT_FALSE(UsbUpdateDevice()) << "no instance is left";
}

INSTANTIATE_TEST_SUITE_P(I2c, LibrarySession, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& fast) {
                           return fast.param ? "Packets" : "Steps";
                         });

}  // namespace
