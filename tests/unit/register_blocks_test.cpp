// Command blocks of selectors 1 and 7.

#include "protocol/register_blocks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace borvan {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::ElementsAre;

TEST(RegisterBlocks, WideWriteSendsValueThenAddressLowHalvesFirst) {
  EXPECT_THAT(WideRegisterWrite(0x80001234, 0x11223344),
              ElementsAre(RegisterCommand{0x12, 0x44, 0x33, 0x00},    // value, low half: V0 V1
                          RegisterCommand{0x22, 0x22, 0x11, 0x00},    // value, high half: V2 V3
                          RegisterCommand{0x42, 0x34, 0x12, 0x00},    // address, low half: A0 A1
                          RegisterCommand{0x82, 0x00, 0x80, 0x00}));  // address, high half: A2 A3
}

TEST(RegisterBlocks, WideReadSendsTheAddressInHalves) {
  EXPECT_THAT(WideRegisterRead(0x80561234),
              ElementsAre(RegisterCommand{0x41, 0x34, 0x12, 0x00},    // A0 A1
                          RegisterCommand{0x81, 0x56, 0x80, 0x00}));  // A2 A3
}

TEST(RegisterBlocks, ByteWriteSendsAddressThenValueWithStepTags) {
  EXPECT_THAT(ByteRegisterWrite(0x0000ABCD, 0x5A),
              ElementsAre(RegisterCommand{0x28, 0xCD, 0xAB, 0x08},    // A0 A1, first step
                          RegisterCommand{0x28, 0x00, 0x00, 0x38},    // A2 A3, second step
                          RegisterCommand{0x28, 0x5A, 0x00, 0x48}));  // V0, third step
}

TEST(RegisterBlocks, ByteWriteCarriesAllOfTheAddressAndTheLowByteOfTheValue) {
  EXPECT_THAT(ByteRegisterWrite(0x12345678, 0xAABBCCDD),
              ElementsAre(RegisterCommand{0x28, 0x78, 0x56, 0x08},    // A0 A1
                          RegisterCommand{0x28, 0x34, 0x12, 0x38},    // A2 A3
                          RegisterCommand{0x28, 0xDD, 0x00, 0x48}));  // V0 alone
}

TEST(RegisterBlocks, ByteReadSendsTheAddressWithStepTags) {
  EXPECT_THAT(ByteRegisterRead(0x12345678),
              ElementsAre(RegisterCommand{0x24, 0x78, 0x56, 0x18},    // A0 A1
                          RegisterCommand{0x24, 0x34, 0x12, 0x58}));  // A2 A3
}

TEST(RegisterBlocks, FeatureRegisterReadIsAByteReadOf1A3) {
  EXPECT_THAT(ByteRegisterRead(0x1A3), ElementsAre(RegisterCommand{0x24, 0xA3, 0x01, 0x18},
                                                   RegisterCommand{0x24, 0x00, 0x00, 0x58}));
}

TEST(RegisterBlocks, WideReplyHalvesAreLowByteFirst) {
  EXPECT_EQ(WideReadLowHalf(Bytes{0x41, 0x44, 0x33, 0x11}), "3344");
  EXPECT_EQ(WideReadHighHalf(Bytes{0x81, 0x22, 0x01, 0x21}), "0122");
}

TEST(RegisterBlocks, WideReplyKeepsLeadingZeros) {
  EXPECT_EQ(WideReadLowHalf(Bytes{0x00, 0x00, 0x00, 0x11}), "0000");
  EXPECT_EQ(WideReadHighHalf(Bytes{0x00, 0x0A, 0x00, 0x21}), "000a");
}

TEST(RegisterBlocks, ByteReplyHasItsValueInByteOne) {
  EXPECT_EQ(ByteReadValue(Bytes{0x24, 0x5A, 0x99, 0x28}), "5a");
  EXPECT_EQ(ByteReadValue(Bytes{0x24, 0x07, 0x99, 0x28}), "07");
}

TEST(RegisterBlocks, RepliesWithForeignTagsCarryNothing) {
  for (unsigned tag = 0; tag <= 0xFF; ++tag) {
    const Bytes reply{0x12, 0x34, 0x56, static_cast<std::uint8_t>(tag)};
    EXPECT_EQ(WideReadLowHalf(reply).has_value(), tag == 0x11) << tag;
    EXPECT_EQ(WideReadHighHalf(reply).has_value(), tag == 0x21) << tag;
    EXPECT_EQ(ByteReadValue(reply).has_value(), tag == 0x28) << tag;
  }
}

TEST(RegisterBlocks, OpcodeOfAReplyPlaysNoPart) {
  EXPECT_EQ(WideReadLowHalf(Bytes{0xFF, 0x02, 0x01, 0x11}), "0102");
  EXPECT_EQ(ByteReadValue(Bytes{0xFF, 0x02, 0x01, 0x28}), "02");
}

TEST(RegisterBlocks, BytesBehindAReplyPlayNoPart) {
  Bytes reply(64, 0xEE);
  reply[1] = 0x5A;
  reply[3] = 0x28;
  EXPECT_EQ(ByteReadValue(reply), "5a");
}

TEST(RegisterBlocks, BlockReadHeadHoldsPageAndBlockStart) {
  std::array<std::uint8_t, 8> head{};
  PutRegisterBlockRead(head, 0x12345678, 0x9ABC);
  EXPECT_THAT(head, ElementsAre(0x01, 0x00, 0x00, 0x38,  // the word 0x38000001, little-endian
                                0x12,                    // bits 24 to 31 of the run's start
                                0x34,                    // bits 16 to 23 of the run's start
                                0x9A, 0xBC));            // block start, big-endian
}

TEST(RegisterBlocks, BlockReadHeadReplacesWhatAReplyLeft) {
  std::array<std::uint8_t, 8> head;
  head.fill(0xEE);
  PutRegisterBlockRead(head, 0x00120000, 0x0038);
  EXPECT_THAT(head, ElementsAre(0x01, 0x00, 0x00, 0x38, 0x00, 0x12, 0x00, 0x38));
}

}  // namespace
}  // namespace borvan
