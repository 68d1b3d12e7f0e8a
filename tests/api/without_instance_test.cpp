// Exports before UsbIniDevice and after UsbDestroyUSB.

#include "api/api_fixture.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

class WithoutInstanceTest : public ApiTest {
 protected:
  void ExpectRefusals() {
    std::uint32_t value = 0x12345678;
    const std::string file = folder.Put("list.txt", "0xfffd,0x00,\n");
    const std::string output = folder.Path("out.bin");
    EXPECT_FALSE(UsbUpdateDevice());
    EXPECT_FALSE(UsbFlashRead(0, &value));
    EXPECT_FALSE(UsbFlashWrite(0, 0));
    EXPECT_FALSE(UsbFlashErase(0));
    EXPECT_FALSE(UsbRegisterRead(0, &value, 0));
    EXPECT_FALSE(UsbRegisterWrite(0, 0, 0));
    EXPECT_FALSE(UsbI2cRead(0, 0, &value, 0, 0));
    EXPECT_FALSE(UsbI2cWrite(0, 0, 0, 0, 0));
    EXPECT_FALSE(UsbFlashRead(0, nullptr));
    EXPECT_FALSE(UsbFlashWriteFile(file.c_str(), 0));
    EXPECT_FALSE(UsbFlashQuickReadFile(output.c_str(), 0, 1));
    EXPECT_FALSE(UsbRegisterReadFile(output.c_str(), 0, 1));
    EXPECT_FALSE(UsbRegisterWriteFile(file.c_str()));
    EXPECT_FALSE(UsbI2CReadFile(0, 1, output.c_str(), 0, 0));
    EXPECT_FALSE(UsbI2CWriteFile(file.c_str(), 0));
    EXPECT_FALSE(UsbFlashWriteFile(nullptr, 0));
    EXPECT_FALSE(UsbSelectDevice(-1));  // refused before the instance is looked at
    EXPECT_EQ(GetProgressInfo(), 0U);
    EXPECT_EQ(value, 0x12345678U);
    EXPECT_FALSE(std::filesystem::exists(output));
  }

  const TemporaryFolder folder;
};

TEST_F(WithoutInstanceTest, CheckedExportsAreFalseBeforeUsbIniDevice) {
  ExpectRefusals();
}

TEST_F(WithoutInstanceTest, CheckedExportsAreFalseAfterUsbDestroyUSB) {
  StartWithChip();
  ASSERT_TRUE(UsbDestroyUSB());
  chip->ForgetTransfers();
  ExpectRefusals();
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(WithoutInstanceTest, ProgressOfTheFormerInstanceIsGone) {
  StartWithChip();
  EXPECT_FALSE(UsbFlashWriteFile("", 0));
  EXPECT_EQ(GetProgressInfo(), 0xE000000A00000000U);
  UsbDestroyUSB();
  EXPECT_EQ(GetProgressInfo(), 0U);
}

}  // namespace
}  // namespace borvan_test
