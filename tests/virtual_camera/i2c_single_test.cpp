// Selector 2: single I2C transfers and step commands.
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;
using virtual_camera::AbsentSlave;
using virtual_camera::SensorConfiguration;

class I2cSingleTest : public DeviceTest {
 protected:
  void AddSensor(std::uint8_t slave, std::uint8_t mode,
                 std::map<std::uint32_t, std::uint32_t> registers = {}) {
    configuration.sensors.push_back({slave, mode, std::move(registers)});
  }
};

TEST_F(I2cSingleTest, EveryWidthModeMovesItsOwnBytes) {
  for (std::uint8_t mode = 0; mode <= 5; ++mode) {
    AddSensor(static_cast<std::uint8_t>(0x20 + mode), mode);
  }
  // direction, slave, option, mode, address big-endian in 4 to 7, data big-endian in 8 to 11;
  // bytes outside the mode's width are there to be ignored
  EXPECT_EQ(Set(2, {0x00, 0x20, 0x07, 0x00, 0x99, 0x99, 0x99, 0x34, 0x99, 0x99, 0x99, 0xA0}), kOk);
  EXPECT_EQ(Set(2, {0x00, 0x21, 0x07, 0x01, 0x99, 0x99, 0x12, 0x34, 0x99, 0x99, 0x99, 0xA1}), kOk);
  EXPECT_EQ(Set(2, {0x00, 0x22, 0x07, 0x02, 0x99, 0x99, 0x12, 0x34, 0x99, 0x99, 0xAB, 0xA2}), kOk);
  EXPECT_EQ(Set(2, {0x00, 0x23, 0x07, 0x03, 0x87, 0x65, 0x12, 0x34, 0x99, 0x99, 0x99, 0xA3}), kOk);
  EXPECT_EQ(Set(2, {0x00, 0x24, 0x07, 0x04, 0x87, 0x65, 0x12, 0x34, 0x99, 0x99, 0xAB, 0xA4}), kOk);
  EXPECT_EQ(Set(2, {0x00, 0x25, 0x07, 0x05, 0x87, 0x65, 0x12, 0x34, 0xDE, 0xAD, 0xAB, 0xA5}), kOk);

  EXPECT_EQ(Set(2, {0x01, 0x20, 0x00, 0x00, 0, 0, 0, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x20, 0, 0x00, 0, 0, 0, 0x34, 0, 0, 0, 0xA0));
  EXPECT_EQ(Set(2, {0x01, 0x21, 0x00, 0x01, 0, 0, 0x12, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x21, 0, 0x01, 0, 0, 0x12, 0x34, 0, 0, 0, 0xA1));
  EXPECT_EQ(Set(2, {0x01, 0x22, 0x00, 0x02, 0, 0, 0x12, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x22, 0, 0x02, 0, 0, 0x12, 0x34, 0, 0, 0xAB, 0xA2));
  EXPECT_EQ(Set(2, {0x01, 0x23, 0x00, 0x03, 0x87, 0x65, 0x12, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x23, 0, 0x03, 0x87, 0x65, 0x12, 0x34, 0, 0, 0, 0xA3));
  EXPECT_EQ(Set(2, {0x01, 0x24, 0x00, 0x04, 0x87, 0x65, 0x12, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12),
              ElementsAre(0x01, 0x24, 0, 0x04, 0x87, 0x65, 0x12, 0x34, 0, 0, 0xAB, 0xA4));
  EXPECT_EQ(Set(2, {0x01, 0x25, 0x00, 0x05, 0x87, 0x65, 0x12, 0x34, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12),
              ElementsAre(0x01, 0x25, 0, 0x05, 0x87, 0x65, 0x12, 0x34, 0xDE, 0xAD, 0xAB, 0xA5));
}

TEST_F(I2cSingleTest, UnknownModeMovesEightBitsEachWay) {
  AddSensor(0x36, 0, {{0x0F, 0x81}});
  EXPECT_EQ(Set(2, {0x01, 0x36, 0x00, 0x07, 0, 0, 0, 0x0F, 0, 0, 0, 0}), kOk);
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x36, 0, 0x07, 0, 0, 0, 0x0F, 0, 0, 0, 0x81));
}

TEST_F(I2cSingleTest, SlavesAreTakenExactlyAsSent) {
  AddSensor(0x6C, 1, {{0x3012, 0x55}});
  AddSensor(0x6D, 1, {{0x3012, 0x66}});  // not the read address of the other
  Set(2, {0x01, 0x6D, 0x00, 0x01, 0, 0, 0x30, 0x12, 0, 0, 0, 0});
  EXPECT_EQ(Get(2, 12).at(11), 0x66);
}

TEST_F(I2cSingleTest, AbsentSlaveFailsWritesAtOnceAndReadsAtTheirGet) {
  EXPECT_EQ(Set(2, {0x00, 0x10, 0, 0, 0, 0, 0, 1, 0, 0, 0, 2}), kGenFailure);
  EXPECT_EQ(Set(2, {0x01, 0x10, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}), kOk);
  EXPECT_EQ(GetResult(2, 12), kGenFailure);
}

TEST_F(I2cSingleTest, AbsentSlaveMayReadAsZeros) {
  configuration.absent_slave = AbsentSlave::kZeros;
  EXPECT_EQ(Set(2, {0x00, 0x10, 0, 2, 0, 0, 0, 1, 0, 0, 0, 2}), kOk);
  Set(2, {0x01, 0x10, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0});
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x10, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0));
}

TEST_F(I2cSingleTest, AbsentSlaveMayReadAsOnesInItsWidth) {
  configuration.absent_slave = AbsentSlave::kOnes;
  Set(2, {0x01, 0x10, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0});
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x10, 0, 2, 0, 0, 0, 1, 0, 0, 0xFF, 0xFF));
}

TEST_F(I2cSingleTest, SensorDoesNotAcknowledgeAnotherWidth) {
  AddSensor(0x36, 1, {{0x0F, 0x81}});
  EXPECT_EQ(Set(2, {0x01, 0x36, 0, 0x00, 0, 0, 0, 0x0F, 0, 0, 0, 0}), kOk);
  EXPECT_EQ(GetResult(2, 12), kGenFailure);
  EXPECT_EQ(Set(2, {0x00, 0x36, 0, 0x02, 0, 0, 0, 0x0F, 0, 0, 0, 1}), kGenFailure);
}

TEST_F(I2cSingleTest, StepReadAnswersTheLowByteOfTheRegister) {
  AddSensor(0x36, 2, {{0x1234, 0xABCD}});
  EXPECT_EQ(Set(2, {0x14, 0x36, 0x02, 0x01}), kOk);  // slave, width mode, first step
  EXPECT_EQ(Set(2, {0x14, 0x34, 0x12, 0x02}), kOk);  // register, low byte first, second step
  EXPECT_EQ(Get(2, 12), Padded({0x14, 0xCD}, 12));
}

TEST_F(I2cSingleTest, StepWriteHappensAtItsThirdStep) {
  AddSensor(0x36, 2);
  EXPECT_EQ(Set(2, {0x18, 0x36, 0x02, 0x01}), kOk);  // slave, width mode, first step
  EXPECT_EQ(Set(2, {0x18, 0x34, 0x12, 0x02}), kOk);  // register 0x1234
  EXPECT_EQ(Set(2, {0x18, 0xCD, 0xAB, 0x04}), kOk);  // value 0xABCD
  Set(2, {0x01, 0x36, 0, 0x02, 0, 0, 0x12, 0x34, 0, 0, 0, 0});
  EXPECT_THAT(Get(2, 12), ElementsAre(0x01, 0x36, 0, 0x02, 0, 0, 0x12, 0x34, 0, 0, 0xAB, 0xCD));
}

TEST_F(I2cSingleTest, StepWriteInAnEightBitModeDropsHighBytes) {
  AddSensor(0x36, 0);
  Set(2, {0x18, 0x36, 0x00, 0x01});
  Set(2, {0x18, 0xFE, 0xFF, 0x02});  // register 0xFFFE: 0xFE on this bus
  Set(2, {0x18, 0x03, 0x01, 0x04});  // value 0x0103: 0x03
  Set(2, {0x01, 0x36, 0, 0x00, 0, 0, 0, 0xFE, 0, 0, 0, 0});
  EXPECT_EQ(Get(2, 12).at(11), 0x03);
}

TEST_F(I2cSingleTest, UnknownCommandsFail) {
  EXPECT_EQ(Set(2, {0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kGenFailure);
  EXPECT_EQ(Set(2, {0x14, 0x36, 0x00, 0x04}), kGenFailure);
  EXPECT_EQ(Set(2, {0x18, 0x36, 0x00, 0x03}), kGenFailure);
}

}  // namespace
}  // namespace virtual_camera_test
