// The exports of single accesses: numbers into texts, texts into numbers, results into booleans.

#include "api/api_fixture.h"

namespace borvan_test {
namespace {

using Texts = std::vector<std::string>;
using Blocks = std::vector<std::vector<std::uint8_t>>;

constexpr auto kDeviceFailure = static_cast<borvan::Result>(0x8007001F);

class AccessExportsTest : public ApiTest {
 protected:
  void FailEveryTransfer() {
    chip->Intercept([](const Transfer& transfer) -> std::optional<borvan::Result> {
      return transfer.is_length_query ? std::nullopt : std::optional(kDeviceFailure);
    });
  }
};

class AccessTextsTest : public RecordedApiTest {};

TEST_F(AccessTextsTest, UsbRegisterReadPassesAddressPresentValueAndFlag) {
  std::uint32_t value = 0xDEADBEEF;
  device->answer = "5a";
  EXPECT_TRUE(UsbRegisterRead(0x1A3, &value, 1));
  EXPECT_EQ(device->texts, (Texts{"RegisterRead", "1a3", "deadbeef"}));
  EXPECT_EQ(device->numbers, std::vector<std::uint32_t>{1});
  EXPECT_EQ(value, 0x5AU);
  value = 0;
  EXPECT_TRUE(UsbRegisterRead(0, &value, 255));
  EXPECT_EQ(device->texts, (Texts{"RegisterRead", "0", "0"}));
  EXPECT_EQ(device->numbers, std::vector<std::uint32_t>{255});
  EXPECT_TRUE(UsbRegisterRead(0xFFFFFFFF, &value, 2));
  EXPECT_EQ(device->texts.at(1), "ffffffff");
}

TEST_F(AccessTextsTest, UsbRegisterReadLeavesTheValueUnchangedOnFailure) {
  std::uint32_t value = 0x12345678;
  device->answer = "5a";
  device->result = static_cast<borvan::Result>(0xE0000002);
  EXPECT_FALSE(UsbRegisterRead(0, &value, 0));
  EXPECT_EQ(value, 0x12345678U);
}

TEST_F(AccessTextsTest, PositiveResultsAreTrue) {
  device->result = 1;
  device->answer = "7";
  std::uint32_t value = 0;
  EXPECT_TRUE(UsbRegisterRead(0, &value, 0));
  EXPECT_EQ(value, 7U);
  EXPECT_TRUE(UsbRegisterWrite(0, 0, 0));
  EXPECT_TRUE(UsbFlashWrite(0, 0));
  EXPECT_TRUE(UsbFlashErase(0));
}

struct AnswerCase {
  const char* text;
  std::uint32_t value;
};

TEST_F(AccessTextsTest, AnswersAreReadAs64BitNumbersAndCutTo32Bits) {
  const AnswerCase cases[] = {
      {"", 0},
      {"0", 0},
      {"5A", 0x5A},
      {"0x1f", 0x1F},
      {"0X1f", 0x1F},
      {"12g4", 0x12},
      {"xyz", 0},
      {" 7", 7},
      {"deadbeef", 0xDEADBEEF},
      {"123456789", 0x23456789},
      {"1fffffffe", 0xFFFFFFFE},
  };
  for (const AnswerCase& tried : cases) {
    device->answer = tried.text;
    std::uint32_t value = 0xCCCCCCCC;
    EXPECT_TRUE(UsbRegisterRead(0, &value, 0));
    EXPECT_EQ(value, tried.value) << tried.text;
    value = 0xCCCCCCCC;
    EXPECT_TRUE(UsbFlashRead(0, &value));
    EXPECT_EQ(value, tried.value) << tried.text;
  }
}

TEST_F(AccessTextsTest, UsbRegisterWritePassesAddressValueAndFlag) {
  EXPECT_TRUE(UsbRegisterWrite(0x80001234, 0xA, 2));
  EXPECT_EQ(device->texts, (Texts{"RegisterWrite", "80001234", "a"}));
  EXPECT_EQ(device->numbers, std::vector<std::uint32_t>{2});
  device->result = kDeviceFailure;
  EXPECT_FALSE(UsbRegisterWrite(0, 0, 0));
}

TEST_F(AccessTextsTest, UsbFlashReadPassesTheAddressAndAnEmptyText) {
  std::uint32_t value = 0x77;
  device->answer = "01020304";
  EXPECT_TRUE(UsbFlashRead(0x1F000, &value));
  EXPECT_EQ(device->texts, (Texts{"FlashRead", "1f000", ""}));
  EXPECT_EQ(value, 0x01020304U);
}

TEST_F(AccessTextsTest, UsbFlashReadStoresTheTextWhateverTheResult) {
  std::uint32_t value = 0x77;
  device->result = kDeviceFailure;
  EXPECT_TRUE(UsbFlashRead(0, &value));
  EXPECT_EQ(value, 0U);
  device->answer = "12";
  EXPECT_TRUE(UsbFlashRead(0, &value));
  EXPECT_EQ(value, 0x12U);
}

TEST_F(AccessTextsTest, UsbFlashWriteAndUsbFlashErasePassTheirTexts) {
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0x01020304));
  EXPECT_EQ(device->texts, (Texts{"FlashWrite", "1000", "1020304"}));
  EXPECT_TRUE(UsbFlashErase(0xFFFFF000));
  EXPECT_EQ(device->texts, (Texts{"FlashErase", "fffff000"}));
  device->result = kDeviceFailure;
  EXPECT_FALSE(UsbFlashWrite(0, 0));
  EXPECT_FALSE(UsbFlashErase(0));
}

TEST_F(AccessTextsTest, NullValuePointersMakeTheAccessAndStoreNothing) {
  device->answer = "5a";
  EXPECT_TRUE(UsbRegisterRead(0x10, nullptr, 0));
  EXPECT_EQ(device->texts.at(1), "10");
  EXPECT_TRUE(UsbFlashRead(0x20, nullptr));
  EXPECT_EQ(device->texts.at(1), "20");
}

TEST_F(AccessExportsTest, RegistersAreWrittenAndReadInBothWidths) {
  StartWithChip();
  EXPECT_TRUE(UsbRegisterWrite(0x80001234, 0x11223344, 1));
  const Blocks expected = {
      {0x12, 0x44, 0x33, 0x00},  // low half of the value
      {0x22, 0x22, 0x11, 0x00},  // high half
      {0x42, 0x34, 0x12, 0x00},  // low half of the address
      {0x82, 0x00, 0x80, 0x00},  // high half
  };
  EXPECT_EQ(chip->Sent(1), expected);
  std::uint32_t value = 0;
  EXPECT_TRUE(UsbRegisterRead(0x80001234, &value, 1));
  EXPECT_EQ(value, 0x11223344U);
  EXPECT_TRUE(UsbRegisterRead(0x80001234, &value, 2)) << "a read takes the byte form for 2";
  EXPECT_EQ(value, 0x44U);
  EXPECT_TRUE(UsbRegisterWrite(0xABCD, 0x5A, 0));
  EXPECT_EQ(chip->Register(0xABCD), 0x5AU);
}

TEST_F(AccessExportsTest, UsbFlashReadReturnsTrueAndWritesZeroWhenTheDeviceFails) {
  StartWithChip();
  FailEveryTransfer();
  std::uint32_t value = 0x12345678;
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0U);
}

TEST_F(AccessExportsTest, UsbFlashReadReturnsTrueAndWritesZeroWithoutACamera) {
  UsbIniDevice();
  std::uint32_t value = 0x12345678;
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0U);
}

TEST_F(AccessExportsTest, FlashIsErasedWrittenAndRead) {
  StartWithChip();
  chip->PutFlash(0x1000, {0x00, 0x00, 0x00, 0x00});
  std::uint32_t value = 1;
  EXPECT_TRUE(UsbFlashErase(0x1000));
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0xFFFFFFFFU);
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0x01020304));
  EXPECT_EQ(chip->Flash(0x1000, 4), (std::vector<std::uint8_t>{0x01, 0x02, 0x03, 0x04}));
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0x01020304U);
}

TEST_F(AccessExportsTest, I2cAccessesSendTheirBlocks) {
  StartWithChip();
  chip->PutI2cRegister(0x6C, 1, 0x3012, 0x5A);
  std::uint32_t value = 0x99;
  EXPECT_TRUE(UsbI2cRead(0x6C, 0x3012, &value, 1, 0));
  EXPECT_EQ(value, 0x5AU);
  EXPECT_TRUE(UsbI2cWrite(0x20, 0x11223344, 0xAABBCCDD, 5, 7));
  const Blocks expected = {
      // read, slave, option, mode, register, data
      {0x01, 0x6C, 0x00, 0x01, 0x00, 0x00, 0x30, 0x12, 0x00, 0x00, 0x00, 0x00},
      {0x00, 0x20, 0x07, 0x05, 0x11, 0x22, 0x33, 0x44, 0xAA, 0xBB, 0xCC, 0xDD},
  };
  EXPECT_EQ(chip->Sent(2), expected);
}

TEST_F(AccessExportsTest, I2cReadOfAnUnknownModeGivesThePresentValueBack) {
  StartWithChip();
  chip->PutI2cRegister(0x6C, 0, 0x12, 0x5A);
  std::uint32_t value = 0x12345678;
  EXPECT_TRUE(UsbI2cRead(0x6C, 0x12, &value, 9, 0));
  EXPECT_EQ(value, 0x12345678U);
  EXPECT_TRUE(UsbI2cRead(0x6C, 0x12, nullptr, 9, 0));
}

TEST_F(AccessExportsTest, FailuresOfTheDeviceAreFalseAndLeaveTheValue) {
  StartWithChip();
  FailEveryTransfer();
  std::uint32_t value = 0x12345678;
  EXPECT_FALSE(UsbRegisterRead(0, &value, 0));
  EXPECT_FALSE(UsbRegisterRead(0, &value, 1));
  EXPECT_FALSE(UsbI2cRead(0, 0, &value, 0, 0));
  EXPECT_EQ(value, 0x12345678U);
  EXPECT_FALSE(UsbRegisterWrite(0, 0, 0));
  EXPECT_FALSE(UsbI2cWrite(0, 0, 0, 0, 0));
  EXPECT_FALSE(UsbFlashWrite(0, 0));
  EXPECT_FALSE(UsbFlashErase(0));
}

TEST_F(AccessExportsTest, AccessesWithoutAnOpenCameraAreFalse) {
  script->cameras = {MakeCamera(u'a')};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(0));
  std::uint32_t value = 0x12345678;
  EXPECT_FALSE(UsbRegisterRead(0, &value, 0));
  EXPECT_FALSE(UsbI2cRead(0, 0, &value, 0, 0));
  EXPECT_EQ(value, 0x12345678U);
  EXPECT_FALSE(UsbRegisterWrite(0, 0, 0));
  EXPECT_FALSE(UsbI2cWrite(0, 0, 0, 0, 0));
  EXPECT_FALSE(UsbFlashWrite(0, 0));
  EXPECT_FALSE(UsbFlashErase(0));
}

TEST_F(AccessExportsTest, ForeignReplyIsTrueAndGivesThePresentValueBack) {
  StartWithChip();
  std::uint32_t value = 0x12345678;
  // A get that leaves the buffer as it was sent: its tag is not that of a reply.
  chip->Intercept([](const Transfer& transfer) -> std::optional<borvan::Result> {
    return transfer.is_length_query ? std::nullopt : std::optional<borvan::Result>(0);
  });
  EXPECT_TRUE(UsbRegisterRead(0x10, &value, 0));
  EXPECT_EQ(value, 0x12345678U);
  EXPECT_TRUE(UsbRegisterRead(0x10, &value, 1));
  EXPECT_EQ(value, 0x12345678U);
}

}  // namespace
}  // namespace borvan_test
