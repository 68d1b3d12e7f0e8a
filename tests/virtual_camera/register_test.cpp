// Selector 1: chip registers, one at a time.
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;

class RegisterTest : public DeviceTest {};

TEST_F(RegisterTest, WideWriteTakesValueThenAddressLowHalvesFirst) {
  EXPECT_EQ(Set(1, {0x12, 0x44, 0x33, 0x00}), kOk);  // value, bits 0 to 15: 0x3344
  EXPECT_EQ(Set(1, {0x22, 0x22, 0x11, 0x00}), kOk);  // value, bits 16 to 31: 0x1122
  EXPECT_EQ(Set(1, {0x42, 0x34, 0x12, 0x00}), kOk);  // address, bits 0 to 15: 0x1234
  EXPECT_EQ(Set(1, {0x82, 0x00, 0x80, 0x00}), kOk);  // address, bits 16 to 31: 0x8000

  EXPECT_EQ(Set(1, {0x41, 0x34, 0x12, 0x00}), kOk);  // address, bits 0 to 15: 0x1234
  EXPECT_EQ(Set(1, {0x81, 0x00, 0x80, 0x00}), kOk);  // address, bits 16 to 31: 0x8000
  // opcode echoed, low half 0x3344 with its low byte first, tag of the low half
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0x44, 0x33, 0x11));
  // opcode echoed, high half 0x1122, tag of the high half
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0x22, 0x11, 0x21));
}

TEST_F(RegisterTest, AllOtherOpcodesAndTagsAreRefused) {
  std::vector<unsigned> taken;
  for (unsigned number = 0; number < 0x10000; ++number) {
    const Bytes block = {static_cast<std::uint8_t>(number >> 8U), 0, 0,
                         static_cast<std::uint8_t>(number)};
    if (Set(1, block) == kOk) {
      taken.push_back(number);
    }
  }
  // The opcode, then the tag: six wide commands, five byte commands.
  EXPECT_EQ(taken.size(), 11U);
  EXPECT_THAT(taken, testing::IsSupersetOf({0x1200U, 0x2200U, 0x4200U, 0x8200U, 0x4100U, 0x8100U}));
}

TEST_F(RegisterTest, WideReplyStaysAtItsHighHalf) {
  configuration.registers = {{0x10, 0xAABBCCDD}};
  Set(1, {0x41, 0x10, 0x00, 0x00});
  Set(1, {0x81, 0x00, 0x00, 0x00});
  Get(1, 4);
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0xBB, 0xAA, 0x21));
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0xBB, 0xAA, 0x21));
}

TEST_F(RegisterTest, WideWriteHappensAtTheLastStepOnly) {
  Set(1, {0x12, 0x44, 0x33, 0x00});
  Set(1, {0x22, 0x22, 0x11, 0x00});
  Set(1, {0x42, 0x34, 0x12, 0x00});
  Set(1, {0x41, 0x34, 0x12, 0x00});
  Set(1, {0x81, 0x00, 0x00, 0x00});
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0x00, 0x00, 0x11));
}

TEST_F(RegisterTest, ByteWriteAndReadFollowTheirStepTags) {
  EXPECT_EQ(Set(1, {0x28, 0xCD, 0xAB, 0x08}), kOk);  // address, bits 0 to 15: 0xABCD
  EXPECT_EQ(Set(1, {0x28, 0x01, 0x02, 0x38}), kOk);  // address, bits 16 to 31: 0x0201
  EXPECT_EQ(Set(1, {0x28, 0x5A, 0x00, 0x48}), kOk);  // value 0x5A

  EXPECT_EQ(Set(1, {0x24, 0xCD, 0xAB, 0x18}), kOk);  // address, bits 0 to 15: 0xABCD
  EXPECT_EQ(Set(1, {0x24, 0x01, 0x02, 0x58}), kOk);  // address, bits 16 to 31: 0x0201
  // opcode echoed, value, zero, tag of a byte reply
  EXPECT_THAT(Get(1, 4), ElementsAre(0x24, 0x5A, 0x00, 0x28));
}

TEST_F(RegisterTest, ByteRegisterIsTheLowByteOfTheWideOneAtItsAddress) {
  configuration.registers = {{0x20, 0x11223344}, {0x21, 0x99}};
  Set(1, {0x28, 0x20, 0x00, 0x08});  // address 0x0020
  Set(1, {0x28, 0x00, 0x00, 0x38});
  Set(1, {0x28, 0xAB, 0x00, 0x48});  // value 0xAB
  Set(1, {0x41, 0x20, 0x00, 0x00});
  Set(1, {0x81, 0x00, 0x00, 0x00});
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0xAB, 0x33, 0x11));
  EXPECT_THAT(Get(1, 4), ElementsAre(0x81, 0x22, 0x11, 0x21));
  Set(1, {0x24, 0x21, 0x00, 0x18});  // the next address is another register
  Set(1, {0x24, 0x00, 0x00, 0x58});
  EXPECT_THAT(Get(1, 4), ElementsAre(0x24, 0x99, 0x00, 0x28));
}

TEST_F(RegisterTest, FeatureRegisterIsAnInitialValue) {
  configuration.registers = {{0x1A3, 0x20}};
  Set(1, {0x24, 0xA3, 0x01, 0x18});
  Set(1, {0x24, 0x00, 0x00, 0x58});
  EXPECT_THAT(Get(1, 4), ElementsAre(0x24, 0x20, 0x00, 0x28));
}

TEST_F(RegisterTest, UnknownCommandsFailAndLeaveAReplyOfZeros) {
  const std::vector<Bytes> blocks = {
      {0x00, 0x00, 0x00, 0x00},  // no opcode
      {0x12, 0x44, 0x33, 0x08},  // a wide command has no step tag
      {0x28, 0xCD, 0xAB, 0x18},  // a byte write with the tag of a read
      {0x24, 0xCD, 0xAB, 0x48},  // a byte read with the tag of a value
      {0x21, 0x00, 0x00, 0x00},  // a value half in a read
  };
  for (const Bytes& block : blocks) {
    Set(1, {0x24, 0x00, 0x00, 0x18});
    Set(1, {0x24, 0x00, 0x00, 0x58});
    EXPECT_EQ(Set(1, block), kGenFailure);
    EXPECT_THAT(Get(1, 4), ElementsAre(0, 0, 0, 0));
  }
}

TEST_F(RegisterTest, BytesBehindTheCommandAreIgnored) {
  configuration.lengths[0] = 8;
  configuration.registers = {{0x07, 0x31}};
  EXPECT_EQ(Set(1, {0x24, 0x07, 0x00, 0x18, 0xDE, 0xAD, 0xBE, 0xEF}), kOk);
  EXPECT_EQ(Set(1, {0x24, 0x00, 0x00, 0x58, 0xDE, 0xAD, 0xBE, 0xEF}), kOk);
  EXPECT_THAT(Get(1, 8), ElementsAre(0x24, 0x31, 0x00, 0x28, 0, 0, 0, 0));
}

}  // namespace
}  // namespace virtual_camera_test
