// The three channel operations, as hosts of the device object can call them. What every request
// record must hold is checked by the scripted control.

#include "camera_with_script.h"

namespace borvan::test {
namespace {

class Channel : public CameraWithScript {};

TEST_F(Channel, LengthQuerySucceedsOnMoreDataAlone) {
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    Play({ReportsLength(selector, 64 + selector)});
    std::uint32_t length = 5;
    EXPECT_EQ(device_.ChannelGetLength(selector, &length), 0);
    EXPECT_EQ(length, 64 + selector);
    control_->ExpectAllPlayed();
  }
}

TEST_F(Channel, LengthQueryReportsAnyLength) {
  for (const std::uint32_t reported : {0U, 1U, 65535U, 65536U, 0x80000000U, 0xFFFFFFFFU}) {
    Play({ReportsLength(1, reported)});
    std::uint32_t length = 5;
    EXPECT_EQ(device_.ChannelGetLength(1, &length), 0);
    EXPECT_EQ(length, reported);
  }
}

TEST_F(Channel, LengthQueryWithAnotherAnswerLeavesTheLength) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}, kDeviceGone, Code(0x800700EB)}) {
    Play({AnswersLengthQuery(1, answer, 64)});
    std::uint32_t length = 5;
    EXPECT_EQ(device_.ChannelGetLength(1, &length), answer);
    EXPECT_EQ(length, 5U);
  }
}

TEST_F(Channel, SetHandsOverLengthAndBuffer) {
  Play({Takes(4, 3, {0x01, 0x02, 0x03}, 5)});
  Bytes buffer = {0x01, 0x02, 0x03, 0x04};
  EXPECT_EQ(device_.ChannelSet(4, 3, buffer.data()), 5);
  EXPECT_EQ(buffer, (Bytes{0x01, 0x02, 0x03, 0x04}));
}

TEST_F(Channel, GetFillsTheBuffer) {
  Play({Gives(5, 3, {0x0A, 0x0B, 0x0C}, 5)});
  Bytes buffer = {0x01, 0x02, 0x03, 0x04};
  EXPECT_EQ(device_.ChannelGet(5, 3, buffer.data()), 5);
  EXPECT_EQ(buffer, (Bytes{0x0A, 0x0B, 0x0C, 0x04}));
}

TEST_F(Channel, TransferReturnsTheDevicesAnswer) {
  std::uint8_t byte = 0;
  for (const Result answer : {Result{0}, Result{1}, kDeviceGone, Code(0x800700EA)}) {
    Play({Takes(1, 1, {0}, answer), GivesNothing(1, 1, answer)});
    EXPECT_EQ(device_.ChannelSet(1, 1, &byte), answer);
    EXPECT_EQ(device_.ChannelGet(1, 1, &byte), answer);
    control_->ExpectAllPlayed();
  }
}

TEST_F(Channel, SelectorsOutsideTheProtocolAreHandedOn) {
  Play({ReportsLength(0, 1), ReportsLength(0xFFFFFFFF, 2)});
  std::uint32_t length = 0;
  EXPECT_EQ(device_.ChannelGetLength(0, &length), 0);
  EXPECT_EQ(device_.ChannelGetLength(0xFFFFFFFF, &length), 0);
}

TEST_F(Channel, NullPointersAreRefusedWithoutATransfer) {
  EXPECT_EQ(device_.ChannelGetLength(1, nullptr), kNoChannel);
  EXPECT_EQ(device_.ChannelSet(1, 4, nullptr), kNoChannel);
  EXPECT_EQ(device_.ChannelGet(1, 4, nullptr), kNoChannel);
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(CameraWithoutChannel, ChannelOperationsAnswerNullPointer) {
  std::uint32_t length = 5;
  std::uint8_t byte = 7;
  EXPECT_EQ(device_.ChannelGetLength(1, &length), kNoChannel);
  EXPECT_EQ(device_.ChannelSet(1, 1, &byte), kNoChannel);
  EXPECT_EQ(device_.ChannelGet(1, 1, &byte), kNoChannel);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(byte, 7);
}

TEST(BaseDevice, HasNoChannelOperations) {
  BorvanUSBBase device(PlatformWith(std::make_shared<Camera>()));
  std::uint32_t length = 5;
  std::uint8_t byte = 7;
  EXPECT_EQ(device.ChannelGetLength(1, &length), Code(0x80004001));
  EXPECT_EQ(device.ChannelSet(1, 1, &byte), Code(0x80004001));
  EXPECT_EQ(device.ChannelGet(1, 1, &byte), Code(0x80004001));
  EXPECT_EQ(length, 5U);
}

}  // namespace
}  // namespace borvan::test
