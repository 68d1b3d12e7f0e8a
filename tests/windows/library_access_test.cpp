// Single accesses through the exports: registers of the chip, of the I2C bus, words of the flash.

#include <array>
#include <ostream>

#include "rig.h"

namespace {

using test::Bytes;
using test::Slice;

constexpr std::uint32_t kUntouched = 0xEEEEEEEE;

class LibraryAccess : public test::Rig {
 protected:
  static std::uint32_t ReadRegister(std::uint32_t address, std::uint8_t flag) {
    std::uint32_t value = kUntouched;
    EXPECT_TRUE(UsbRegisterRead(address, &value, flag));
    return value;
  }
  static std::uint32_t ReadFlash(std::uint32_t address) {
    std::uint32_t value = kUntouched;
    EXPECT_TRUE(UsbFlashRead(address, &value));
    return value;
  }

  // Every export that looks for an instance, and finds none.
  void ExpectAllRefused() const {
    std::uint32_t value = kUntouched;
    EXPECT_FALSE(UsbUpdateDevice());
    EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
    EXPECT_FALSE(UsbRegisterWrite(0x100, 1, 0));
    EXPECT_FALSE(UsbI2cRead(0x20, 0, &value, 0, 0));
    EXPECT_FALSE(UsbI2cWrite(0x20, 0, 1, 0, 0));
    EXPECT_FALSE(UsbFlashRead(0, &value));
    EXPECT_FALSE(UsbFlashWrite(0, 1));
    EXPECT_FALSE(UsbFlashErase(0));
    EXPECT_EQ(value, kUntouched);
    const std::string file = MakeFile("list", {'1', ',', '2', ',', '\n'});
    EXPECT_FALSE(UsbFlashWriteFile(file.c_str(), 0));
    EXPECT_FALSE(UsbFlashQuickReadFile(File("dump").c_str(), 0, 0));
    EXPECT_FALSE(UsbRegisterReadFile(File("registers").c_str(), 0, 0));
    EXPECT_FALSE(UsbRegisterWriteFile(file.c_str()));
    EXPECT_FALSE(UsbI2CReadFile(0, 0, File("i2c").c_str(), 0, 0));
    EXPECT_FALSE(UsbI2CWriteFile(file.c_str(), 0));
    EXPECT_EQ(GetProgressInfo(), 0U);
  }
};

TEST_F(LibraryAccess, ReadsARegisterInBothWidths) {
  UseCamera(R"(, "registers": {"0x80001234": "0x11223344"})");
  EXPECT_EQ(ReadRegister(0x80001234, 1), 0x11223344U);
  EXPECT_EQ(ReadRegister(0x80001234, 0), 0x44U);
}

TEST_F(LibraryAccess, WritesARegisterInBothWidths) {
  UseCamera();
  EXPECT_TRUE(UsbRegisterWrite(0x80001234, 0x11223344, 1));
  EXPECT_EQ(ReadRegister(0x80001234, 1), 0x11223344U);
  EXPECT_TRUE(UsbRegisterWrite(0x80001234, 0xFFFFFF5A, 0));
  EXPECT_EQ(ReadRegister(0x80001234, 1), 0x1122335AU) << "the low 8 bits alone were written";
}

// A read takes the wide form for the flag 1 alone, a write for every flag but 0.
TEST_F(LibraryAccess, TakesOtherFlagsForByteReadsAndWideWrites) {
  UseCamera();
  for (const std::uint8_t flag : std::array<std::uint8_t, 3>{2, 0x80, 0xFF}) {
    EXPECT_TRUE(UsbRegisterWrite(0x200U + flag, 0xA1B2C3D4, flag));
    EXPECT_EQ(ReadRegister(0x200U + flag, 1), 0xA1B2C3D4U) << int{flag};
    EXPECT_EQ(ReadRegister(0x200U + flag, flag), 0xD4U) << int{flag};
  }
}

TEST_F(LibraryAccess, ReachesTheFirstAndTheLastRegister) {
  UseCamera();
  for (const std::uint32_t address : {0x00000000U, 0xFFFFFFFFU}) {
    EXPECT_TRUE(UsbRegisterWrite(address, 0xFFFFFFFF, 1));
    EXPECT_EQ(ReadRegister(address, 1), 0xFFFFFFFFU);
    EXPECT_TRUE(UsbRegisterWrite(address, 0, 1));
    EXPECT_EQ(ReadRegister(address, 1), 0U);
  }
}

struct I2cMode {
  std::int32_t mode;
  std::uint32_t address;
  std::uint32_t written;
  std::uint32_t kept;  // what fits the mode's data width
};

// For gtest, which would print the bytes.
void PrintTo(const I2cMode& mode, std::ostream* out) {
  *out << "mode " << mode.mode;
}

class LibraryI2cModes : public LibraryAccess, public testing::WithParamInterface<I2cMode> {};

TEST_P(LibraryI2cModes, WriteAndReadBackAtTheirWidths) {
  const I2cMode& mode = GetParam();
  const std::string number = std::to_string(mode.mode);
  UseCamera(R"(, "sensors": [{"slave": 32, "mode": )" + number + "}]");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbI2cRead(0x20, mode.address, &value, mode.mode, 0));
  EXPECT_EQ(value, 0U);
  EXPECT_TRUE(UsbI2cWrite(0x20, mode.address, mode.written, mode.mode, 0));
  EXPECT_TRUE(UsbI2cRead(0x20, mode.address, &value, mode.mode, 0));
  EXPECT_EQ(value, mode.kept);
}

INSTANTIATE_TEST_SUITE_P(Each, LibraryI2cModes,
                         testing::Values(I2cMode{0, 0x12, 0xA1B2C3D4, 0xD4},
                                         I2cMode{1, 0x3012, 0xA1B2C3D4, 0xD4},
                                         I2cMode{2, 0x3012, 0xA1B2C3D4, 0xC3D4},
                                         I2cMode{3, 0x80003012, 0xA1B2C3D4, 0xD4},
                                         I2cMode{4, 0x80003012, 0xA1B2C3D4, 0xC3D4},
                                         I2cMode{5, 0x80003012, 0xA1B2C3D4, 0xA1B2C3D4}));

TEST_F(LibraryAccess, AsksInAnUnknownI2cModeAndLeavesTheValue) {
  UseCamera(R"(, "sensors": [{"slave": 32, "mode": 0, "registers": {"0x12": "0x55"}}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbI2cRead(0x20, 0x12, &value, 7, 0));
  EXPECT_EQ(value, kUntouched);
}

TEST_F(LibraryAccess, WritesInAnUnknownI2cModeAsInMode0) {
  UseCamera(R"(, "sensors": [{"slave": 32, "mode": 0}])");
  EXPECT_TRUE(UsbI2cWrite(0x20, 0x3412, 0x5678, 7, 0));
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbI2cRead(0x20, 0x12, &value, 0, 0));
  EXPECT_EQ(value, 0x78U);
}

TEST_F(LibraryAccess, OfAnAbsentI2cSlaveFailsAndLeavesTheValue) {
  UseCamera();
  std::uint32_t value = kUntouched;
  EXPECT_FALSE(UsbI2cRead(0x20, 0x12, &value, 0, 0));
  EXPECT_EQ(value, kUntouched);
  EXPECT_FALSE(UsbI2cWrite(0x20, 0x12, 1, 0, 0));
}

TEST_F(LibraryAccess, TakesTheLowByteOfTheI2cSlave) {
  UseCamera(R"(, "sensors": [{"slave": 32, "mode": 0, "registers": {"0x12": "0x55"}}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbI2cRead(0xFFFFFF20, 0x12, &value, 0, 0xFFFFFFFF));
  EXPECT_EQ(value, 0x55U);
}

TEST_F(LibraryAccess, ProgramsAFlashWordMostSignificantByteFirst) {
  UseCamera();
  EXPECT_EQ(ReadFlash(0x1000), 0xFFFFFFFFU);
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0x01020304));
  EXPECT_EQ(ReadFlash(0x1000), 0x01020304U);
  EXPECT_EQ(Slice(Flash(), 0xFFF, 6), (Bytes{0xFF, 0x01, 0x02, 0x03, 0x04, 0xFF}));
}

TEST_F(LibraryAccess, ReadsFlashAtAnyByte) {
  UseCamera();
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0x01020304));
  EXPECT_EQ(ReadFlash(0x0FFE), 0xFFFF0102U);
  EXPECT_EQ(ReadFlash(0x1003), 0x04FFFFFFU);
}

TEST_F(LibraryAccess, ClearsFlashBitsAndErasesOneSector) {
  UseCamera();
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0xF0F0F0F0));
  EXPECT_TRUE(UsbFlashWrite(0x1000, 0xFF00FF00));
  EXPECT_EQ(ReadFlash(0x1000), 0xF000F000U) << "programming only clears bits";
  EXPECT_TRUE(UsbFlashWrite(0x0FFC, 0));
  EXPECT_TRUE(UsbFlashWrite(0x1FFC, 0));
  EXPECT_TRUE(UsbFlashWrite(0x2000, 0));
  EXPECT_TRUE(UsbFlashErase(0x1000));
  EXPECT_EQ(ReadFlash(0x1000), 0xFFFFFFFFU);
  EXPECT_EQ(ReadFlash(0x1FFC), 0xFFFFFFFFU);
  EXPECT_EQ(ReadFlash(0x0FFC), 0U) << "the sector before";
  EXPECT_EQ(ReadFlash(0x2000), 0U) << "the sector behind";
}

TEST_F(LibraryAccess, WithNullPointersIsMadeAndStoresNothing) {
  UseCamera(R"(, "sensors": [{"slave": 32, "mode": 0}])");
  EXPECT_TRUE(UsbRegisterRead(0x100, nullptr, 0));
  EXPECT_TRUE(UsbRegisterRead(0x100, nullptr, 1));
  EXPECT_TRUE(UsbI2cRead(0x20, 0x12, nullptr, 0, 0));
  EXPECT_TRUE(UsbFlashRead(0, nullptr));
}

TEST_F(LibraryAccess, BeforeInitialisationIsRefused) {
  ExpectAllRefused();
}

TEST_F(LibraryAccess, AfterDestructionIsRefused) {
  UseCamera();
  EXPECT_FALSE(UsbFlashWriteFile("", 0)) << "leaves a failure as the progress";
  EXPECT_TRUE(UsbDestroyUSB());
  ExpectAllRefused();
}

// Faults of the device, by selector: 1 registers, 2 I2C, 3 flash words.

TEST_F(LibraryAccess, FailsWhenTheLengthQueryFails) {
  UseCamera(R"(, "faults": [{"direction": "length", "result": "0x80070490"}])");
  std::uint32_t value = kUntouched;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_FALSE(UsbRegisterWrite(0x100, 1, 0));
  EXPECT_FALSE(UsbI2cRead(0x20, 0, &value, 0, 0));
  EXPECT_FALSE(UsbI2cWrite(0x20, 0, 1, 0, 0));
  EXPECT_FALSE(UsbFlashWrite(0, 1));
  EXPECT_FALSE(UsbFlashErase(0));
  EXPECT_EQ(value, kUntouched);
  EXPECT_TRUE(UsbFlashRead(0, &value));
  EXPECT_EQ(value, 0U);
}

TEST_F(LibraryAccess, ToARegisterLeavesTheValueWhenTheReplyIsAnother) {
  UseCamera(R"(, "registers": {"0x100": 90}, "faults": [{"selector": 1, "wrong_tag": true}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_EQ(value, kUntouched);
  EXPECT_TRUE(UsbRegisterRead(0x100, &value, 1));
  EXPECT_EQ(value, kUntouched);
}

TEST_F(LibraryAccess, ToAWideRegisterNeedsBothReplies) {
  // Selecting takes the first get, the wide read the second and the third.
  UseCamera(
      R"(, "registers": {"0x100": 90}, "faults": [{"selector": 1, "at": 3, "wrong_tag": true}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbRegisterRead(0x100, &value, 1));
  EXPECT_EQ(value, kUntouched);
  EXPECT_TRUE(UsbRegisterRead(0x100, &value, 1));
  EXPECT_EQ(value, 90U);
}

TEST_F(LibraryAccess, ToARegisterFailsWhenTheReplyFails) {
  UseCamera(R"(, "faults": [{"selector": 1, "direction": "get", "result": "0x8007001F"}])");
  std::uint32_t value = kUntouched;
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 0));
  EXPECT_FALSE(UsbRegisterRead(0x100, &value, 1));
  EXPECT_EQ(value, kUntouched);
  EXPECT_TRUE(UsbRegisterWrite(0x100, 1, 0));
}

TEST_F(LibraryAccess, ToAWordOfFlashThatFailsReadsAsZeroAndTrue) {
  UseCamera(R"(, "faults": [{"selector": 3, "direction": "get", "result": "0x8007001F"}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0U);
}

TEST_F(LibraryAccess, ToAWordOfFlashWithAnotherReplyReadsAsZeroAndTrue) {
  UseCamera(R"(, "faults": [{"selector": 3, "wrong_tag": true}])");
  std::uint32_t value = kUntouched;
  EXPECT_TRUE(UsbFlashRead(0x1000, &value));
  EXPECT_EQ(value, 0U);
}

TEST_F(LibraryAccess, ToFlashFailsWhenTheCommandFails) {
  UseCamera(R"(, "faults": [{"selector": 3, "direction": "set", "result": "0x8007001F"}])");
  EXPECT_FALSE(UsbFlashWrite(0x1000, 1));
  EXPECT_FALSE(UsbFlashErase(0x1000));
}

}  // namespace
