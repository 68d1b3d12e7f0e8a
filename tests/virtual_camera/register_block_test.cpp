// Selector 7: runs of chip registers.
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;

class RegisterBlockTest : public DeviceTest {
 protected:
  std::uint8_t ReadByteRegister(std::uint32_t address) {
    Set(1,
        {0x24, static_cast<std::uint8_t>(address), static_cast<std::uint8_t>(address >> 8), 0x18});
    Set(1, {0x24, static_cast<std::uint8_t>(address >> 16),
            static_cast<std::uint8_t>(address >> 24), 0x58});
    return Get(1, 4).at(1);
  }
};

TEST_F(RegisterBlockTest, ReadAnswersFiftySixLowBytes) {
  configuration.registers = {{0x80120038, 0x51}, {0x80120039, 0x11223352}, {0x8012006F, 0x56}};
  EXPECT_EQ(Set(7, Padded({0x01, 0x00, 0x00, 0x38,  // read, 56 values
                           0x80, 0x12,              // address bits 24 to 31, 16 to 23
                           0x00, 0x38},             // first register, high byte first
                          64)),
            kOk);
  Bytes expected = Padded({0x01, 0x00, 0x00, 0x38, 0x80, 0x12, 0x00, 0x38,  // echoed
                           0x51, 0x52},
                          64);
  expected[63] = 0x56;  // 0x38 + 55
  EXPECT_EQ(Get(7, 64), expected);
}

TEST_F(RegisterBlockTest, RunBlockWritesConsecutiveRegisters) {
  EXPECT_EQ(Set(7, Padded({0x00, 0x00,  // run
                           0x01,        // marked
                           0x03,        // three values
                           0x05, 0x07,  // delays
                           0x01, 0xFF,  // first register 0x01FF
                           0xA1, 0xA2, 0xA3},
                          64, 0xFF)),
            kOk);
  EXPECT_EQ(ReadByteRegister(0x1FF), 0xA1);
  EXPECT_EQ(ReadByteRegister(0x200), 0xA2);
  EXPECT_EQ(ReadByteRegister(0x201), 0xA3);
  EXPECT_EQ(ReadByteRegister(0x202), 0x00);
}

TEST_F(RegisterBlockTest, RunBlockOfFiftySixFillsThePacket) {
  Bytes block = Padded({0x00, 0x00, 0x00, 0x38, 0x00, 0x00, 0x10, 0x00}, 64, 0x77);
  EXPECT_EQ(Set(7, block), kOk);
  EXPECT_EQ(ReadByteRegister(0x1037), 0x77);
  EXPECT_EQ(ReadByteRegister(0x1038), 0x00);
}

TEST_F(RegisterBlockTest, ScatterBlockWritesItsRecords) {
  EXPECT_EQ(Set(7, Padded({0x00, 0x01,        // scatter
                           0x01,              // both delays are set
                           0x02,              // two records
                           0xFF, 0xFD, 0x05,  // first delay
                           0xFF, 0xFE, 0x06,  // second delay
                           0x01, 0x00, 0xB1,  // register 0x0100 = 0xB1
                           0x20, 0x34, 0xB2,  // register 0x2034 = 0xB2
                           0x30, 0x00, 0xB3},
                          64, 0xFF)),  // behind the count
            kOk);
  EXPECT_EQ(ReadByteRegister(0x0100), 0xB1);
  EXPECT_EQ(ReadByteRegister(0x2034), 0xB2);
  EXPECT_EQ(ReadByteRegister(0x3000), 0x00);
}

TEST_F(RegisterBlockTest, PageHeaderChoosesTheUpperHalfOfTheAddresses) {
  configuration.list_header = virtual_camera::ListHeader::kPage;
  Set(7, Padded({0x00, 0x00, 0x01, 0x01,  // run of one
                 0x80, 0x12,              // bits 24 to 31, 16 to 23
                 0x00, 0x40, 0xC1},
                64, 0xFF));
  Set(7, Padded({0x00, 0x01, 0x01, 0x01,              // scatter of one
                 0xFF, 0xFD, 0x80, 0xFF, 0xFE, 0x13,  // bits 24 to 31, 16 to 23
                 0x00, 0x41, 0xC2},
                64, 0xFF));
  EXPECT_EQ(ReadByteRegister(0x80120040), 0xC1);
  EXPECT_EQ(ReadByteRegister(0x80130041), 0xC2);
  EXPECT_EQ(ReadByteRegister(0x40), 0x00);
}

TEST_F(RegisterBlockTest, UnknownBlocksFailAndWriteNothing) {
  const std::vector<Bytes> blocks = {
      Padded({0x02}, 64),                                         // no such block
      Padded({0x01, 0x00, 0x00, 0x37}, 64),                       // a read of another count
      Padded({0x00, 0x02, 0x00, 0x01}, 64),                       // no such kind of write
      Padded({0x00, 0x00, 0x00, 0x00, 0, 0, 0x01, 0x00}, 64),     // a run of none
      Padded({0x00, 0x00, 0x00, 0x39, 0, 0, 0x01, 0x00}, 64, 9),  // a run of 57
      // scatter of 19
      Padded({0x00, 0x01, 0x00, 0x13, 0xFF, 0xFD, 0, 0xFF, 0xFE, 0, 0x01, 0x00, 0x09}, 64),
      // scatter without the markers
      Padded({0x00, 0x01, 0x00, 0x01, 0xFF, 0xFF, 0, 0xFF, 0xFE, 0, 0x01, 0x00, 0x09}, 64),
  };
  for (const Bytes& block : blocks) {
    EXPECT_EQ(Set(7, block), kGenFailure);
    EXPECT_EQ(Get(7, 64), Bytes(64, 0));
  }
  EXPECT_EQ(ReadByteRegister(0x100), 0x00);
}

}  // namespace
}  // namespace virtual_camera_test
