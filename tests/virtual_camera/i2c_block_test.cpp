// Selector 6: runs of sensor registers.
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::AbsentSlave;

class I2cBlockTest : public DeviceTest {
 protected:
  void UseSensor(std::uint8_t mode, std::map<std::uint32_t, std::uint32_t> registers = {}) {
    configuration.sensors = {{0x36, mode, std::move(registers)}};
  }
  // Address and value of a sensor register as the single read sees it, in modes 0 to 2.
  std::uint32_t ReadSensor(std::uint8_t mode, std::uint16_t address) {
    Set(2, {0x01, 0x36, 0, mode, 0, 0, static_cast<std::uint8_t>(address >> 8),
            static_cast<std::uint8_t>(address), 0, 0, 0, 0});
    const Bytes reply = Get(2, 12);
    return static_cast<std::uint32_t>((reply[10] << 8) | reply[11]);
  }
};

TEST_F(I2cBlockTest, ReadAnswersOneByteForEachAddress) {
  UseSensor(1, {{0x1038, 0x71}, {0x1039, 0x72}, {0x106F, 0x7F}, {0x1070, 0x99}});
  EXPECT_EQ(Set(6, Padded({0x10,  // block read
                           0x36,  // slave
                           0x01,  // width code of mode 1
                           0x38,  // 56 values
                           0x00, 0x00, 0x10, 0x38},
                          64)),  // from 0x1038
            kOk);
  Bytes expected = Padded({0x10, 0x36, 0x01, 0x38, 0x00, 0x00, 0x10, 0x38, 0x71, 0x72}, 64);
  expected[63] = 0x7F;
  EXPECT_EQ(Get(6, 64), expected);
}

TEST_F(I2cBlockTest, ReadInModeZeroTakesTheLowAddressByteAndWrapsInIt) {
  UseSensor(0, {{0xFF, 0x71}, {0x00, 0x72}});
  EXPECT_EQ(Set(6, Padded({0x10, 0x36, 0x00, 0x38, 0x99, 0x99, 0x99, 0xFF}, 64)), kOk);
  const Bytes reply = Get(6, 64);
  EXPECT_EQ(reply[8], 0x71);
  EXPECT_EQ(reply[9], 0x72);
}

TEST_F(I2cBlockTest, ReadOfSixteenBitRegistersAnswersLowBytes) {
  UseSensor(2, {{0x0100, 0xABCD}});
  EXPECT_EQ(Set(6, Padded({0x10, 0x36, 0x02, 0x38, 0x00, 0x00, 0x01, 0x00}, 64)), kOk);
  EXPECT_EQ(Get(6, 64).at(8), 0xCD);
}

TEST_F(I2cBlockTest, OneWidthCodeReadsEverySensorWithLongAddresses) {
  for (const std::uint8_t mode : Bytes{3, 4, 5}) {
    UseSensor(mode, {{0x87654321, 0x42}});
    CloseCamera();
    EXPECT_EQ(Set(6, Padded({0x10, 0x36, 0x05, 0x38,  // width code of all three modes
                             0x87, 0x65, 0x43, 0x21},
                            64)),
              kOk);
    EXPECT_EQ(Get(6, 64).at(8), 0x42) << "mode " << int{mode};
  }
}

TEST_F(I2cBlockTest, ReadOfAnAbsentSlaveFollowsTheConfiguration) {
  const Bytes block = Padded({0x10, 0x50, 0x00, 0x38}, 64);
  EXPECT_EQ(Set(6, block), kOk);
  EXPECT_EQ(GetResult(6, 64), kGenFailure);
  configuration.absent_slave = AbsentSlave::kOnes;
  CloseCamera();
  EXPECT_EQ(Set(6, block), kOk);
  EXPECT_EQ(Get(6, 64), Padded({0x10, 0x50, 0x00, 0x38, 0, 0, 0, 0}, 64, 0xFF));
}

TEST_F(I2cBlockTest, ReadOfNoValuesAnswersZeros) {
  UseSensor(0, {{0x00, 0x71}});
  EXPECT_EQ(Set(6, Padded({0x10, 0x36}, 64)), kOk);
  EXPECT_EQ(Get(6, 64), Padded({0x10, 0x36}, 64));
}

TEST_F(I2cBlockTest, RunOfByteRegisters) {
  UseSensor(0);
  EXPECT_EQ(Set(6, Padded({0x00,                    // run
                           0x36,                    // slave
                           0x30,                    // option 3, mode 0
                           0x03,                    // three values
                           0xFF, 0xFF, 0xFF, 0x10,  // first register 0x10
                           0xA1, 0xA2, 0xA3},
                          64, 0xFF)),
            kOk);
  EXPECT_EQ(ReadSensor(0, 0x10), 0xA1U);
  EXPECT_EQ(ReadSensor(0, 0x11), 0xA2U);
  EXPECT_EQ(ReadSensor(0, 0x12), 0xA3U);
  EXPECT_EQ(ReadSensor(0, 0x13), 0x00U);
}

TEST_F(I2cBlockTest, RunOfByteRegistersWithLongAddresses) {
  UseSensor(1);
  EXPECT_EQ(Set(6, Padded({0x00, 0x36, 0x01, 0x02, 0xFF, 0xFF, 0x30, 0xFF,  // from 0x30FF
                           0xA1, 0xA2},
                          64, 0xFF)),
            kOk);
  EXPECT_EQ(ReadSensor(1, 0x30FF), 0xA1U);
  EXPECT_EQ(ReadSensor(1, 0x3100), 0xA2U);
}

TEST_F(I2cBlockTest, RunOfWordRegistersCarriesHighBytesFirst) {
  UseSensor(2);
  EXPECT_EQ(Set(6, Padded({0x00, 0x36, 0x02, 0x02, 0xFF, 0xFF, 0x30, 0x00,  // from 0x3000
                           0xA1, 0xB1, 0xA2, 0xB2},
                          64, 0xFF)),
            kOk);
  EXPECT_EQ(ReadSensor(2, 0x3000), 0xA1B1U);
  EXPECT_EQ(ReadSensor(2, 0x3001), 0xA2B2U);
}

TEST_F(I2cBlockTest, ScatteredByteRegisters) {
  UseSensor(0);
  EXPECT_EQ(Set(6, Padded({0x01, 0x36, 0x00, 0x02, 0x10, 0xA1,  // register 0x10 = 0xA1
                           0x80, 0xA2,                          // register 0x80 = 0xA2
                           0x20, 0xA3},
                          64, 0xFF)),  // behind the count
            kOk);
  EXPECT_EQ(ReadSensor(0, 0x10), 0xA1U);
  EXPECT_EQ(ReadSensor(0, 0x80), 0xA2U);
  EXPECT_EQ(ReadSensor(0, 0x20), 0x00U);
}

TEST_F(I2cBlockTest, ScatteredByteRegistersWithLongAddresses) {
  UseSensor(1);
  EXPECT_EQ(Set(6, Padded({0x01, 0x36, 0x01, 0x02, 0x30, 0x12, 0xA1,  // register 0x3012 = 0xA1
                           0x40, 0x00, 0xA2},
                          64, 0xFF)),
            kOk);
  EXPECT_EQ(ReadSensor(1, 0x3012), 0xA1U);
  EXPECT_EQ(ReadSensor(1, 0x4000), 0xA2U);
}

TEST_F(I2cBlockTest, ScatteredWordRegisters) {
  UseSensor(2);
  EXPECT_EQ(
      Set(6, Padded({0x01, 0x36, 0x02, 0x02, 0x30, 0x12, 0xA1, 0xB1,  // register 0x3012 = 0xA1B1
                     0x40, 0x00, 0xA2, 0xB2},
                    64, 0xFF)),
      kOk);
  EXPECT_EQ(ReadSensor(2, 0x3012), 0xA1B1U);
  EXPECT_EQ(ReadSensor(2, 0x4000), 0xA2B2U);
}

TEST_F(I2cBlockTest, FullPacketsOfEachKindFit) {
  const std::vector<Bytes> heads = {{0x00, 0x36, 0x00, 56}, {0x00, 0x36, 0x01, 56},
                                    {0x00, 0x36, 0x02, 28}, {0x01, 0x36, 0x00, 30},
                                    {0x01, 0x36, 0x01, 20}, {0x01, 0x36, 0x02, 15}};
  for (const Bytes& head : heads) {
    UseSensor(head[2]);
    CloseCamera();
    EXPECT_EQ(Set(6, Padded(head, 64, 0x11)), kOk);
    Bytes too_many = Padded(head, 64, 0x11);
    too_many[3] += 1;
    EXPECT_EQ(Set(6, too_many), kGenFailure);
  }
}

TEST_F(I2cBlockTest, UnknownBlocksFail) {
  UseSensor(0);
  EXPECT_EQ(Set(6, Padded({0x02, 0x36, 0x00, 0x01}, 64)), kGenFailure);  // no such block
  EXPECT_EQ(Set(6, Padded({0x00, 0x36, 0x03, 0x01}, 64)), kGenFailure);  // no such list mode
  EXPECT_EQ(Set(6, Padded({0x00, 0x36, 0x00, 0x00}, 64)), kGenFailure);  // nothing in it
  EXPECT_EQ(Set(6, Padded({0x10, 0x36, 0x04, 0x38}, 64)), kGenFailure);  // no such width code
  EXPECT_EQ(Set(6, Padded({0x10, 0x36, 0x00, 0x39}, 64)), kGenFailure);  // 57 values
  EXPECT_EQ(Get(6, 64), Bytes(64, 0));
}

TEST_F(I2cBlockTest, WriteToAnAbsentSlaveFails) {
  EXPECT_EQ(Set(6, Padded({0x00, 0x36, 0x00, 0x01}, 64)), kGenFailure);
  EXPECT_EQ(Set(6, Padded({0x01, 0x36, 0x00, 0x01}, 64)), kGenFailure);
}

}  // namespace
}  // namespace virtual_camera_test
