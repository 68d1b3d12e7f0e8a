// What all selectors have in common: lengths, sizes, unknown selectors.
#include <algorithm>
#include <random>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::Each;

class TransferTest : public DeviceTest {};

TEST_F(TransferTest, ReportedLengthsAreThoseOfTheBlocks) {
  const std::vector<std::uint32_t> expected = {4, 12, 11, 64, 64, 64, 64};
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    const virtual_camera::Answer answer = camera().QueryLength(selector);
    EXPECT_EQ(answer.result, Code(0x800700EA));
    EXPECT_EQ(answer.bytes, expected[selector - 1]);
  }
}

TEST_F(TransferTest, ReportedLengthsCanBeConfigured) {
  configuration.lengths = {0, 16, 9, 60, 128, 70000, 0xFFFFFFFF};
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    EXPECT_EQ(camera().QueryLength(selector).bytes, configuration.lengths[selector - 1]);
  }
}

TEST_F(TransferTest, UnknownSelectorsAreNotFound) {
  Bytes bytes(64);
  for (const std::uint32_t selector : {0U, 8U, 0xFFFFFFFFU}) {
    EXPECT_EQ(camera().QueryLength(selector).result, Code(0x80070490));
    EXPECT_EQ(camera().Set(selector, bytes).result, Code(0x80070490));
    EXPECT_EQ(camera().Get(selector, bytes).result, Code(0x80070490));
  }
}

TEST_F(TransferTest, GetNeedsABufferOfTheReportedLength) {
  const std::vector<std::size_t> lengths = {4, 12, 11, 64, 64, 64, 64};
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    Bytes bytes(lengths[selector - 1] - 1, 0xEE);
    const virtual_camera::Answer answer = camera().Get(selector, bytes);
    EXPECT_EQ(answer.result, Code(0x8007007A));
    EXPECT_EQ(answer.bytes, 0U);
    EXPECT_THAT(bytes, Each(0xEE));
  }
}

TEST_F(TransferTest, GetFillsTheReportedLengthOnly) {
  EXPECT_EQ(Get(1, 10), Bytes(4, 0));
  configuration.lengths[0] = 100;
  CloseCamera();
  EXPECT_EQ(Get(1, 100), Bytes(100, 0));
  configuration.lengths[0] = 0;
  CloseCamera();
  EXPECT_EQ(Get(1, 4), Bytes());
}

TEST_F(TransferTest, SetShorterThanItsCommandIsIgnored) {
  const std::vector<Bytes> shorter = {Bytes(3),            // selector 1: 4
                                      Bytes(11),           // selector 2, single transfer: 12
                                      Padded({0x38}, 10),  // selector 3: 11
                                      Bytes(63),          Bytes(63), Bytes(63), Bytes(63)};
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    EXPECT_EQ(Set(selector, shorter[selector - 1]), kGenFailure);
    EXPECT_EQ(Set(selector, {}), kGenFailure);
  }
  EXPECT_EQ(Set(2, {0x14, 0x36, 0x00}), kGenFailure);  // selector 2, step: 4
  EXPECT_EQ(Set(2, {0x18, 0x36, 0x00}), kGenFailure);
  EXPECT_EQ(FlashByte(0), 0xFF);
}

TEST_F(TransferTest, SetShorterThanItsCommandKeepsTheReplyThatWaits) {
  configuration.registers = {{0x05, 0x66}};
  Set(1, {0x24, 0x05, 0x00, 0x18});
  Set(1, {0x24, 0x00, 0x00, 0x58});
  EXPECT_EQ(Set(1, {0x24, 0x00, 0x00}), kGenFailure);
  EXPECT_EQ(Get(1, 4), (Bytes{0x24, 0x66, 0x00, 0x28}));
}

TEST_F(TransferTest, EverySelectorHasItsOwnReply) {
  configuration.registers = {{0x05, 0x66}};
  Set(1, {0x24, 0x05, 0x00, 0x18});
  Set(1, {0x24, 0x00, 0x00, 0x58});
  Set(5, Padded({0, 0, 0, 0}, 64));
  EXPECT_EQ(Get(1, 4), (Bytes{0x24, 0x66, 0x00, 0x28}));
  EXPECT_EQ(Get(5, 64), Bytes(64, 0xFF));
}

TEST_F(TransferTest, NoBlockBreaksTheChip) {
  configuration.sensors = {{0x00, 0, {}}, {0x01, 1, {}}, {0x02, 2, {}}, {0x03, 5, {}}};
  std::mt19937 random(1);
  // Small bytes first: they are opcodes, modes and counts more often.
  const auto byte = [&] {
    const auto draw = static_cast<std::uint32_t>(random());
    return static_cast<std::uint8_t>((draw & 0x100) != 0 ? draw & 0x07 : draw);
  };
  int understood = 0;
  for (int i = 0; i < 4000; ++i) {
    const auto selector = static_cast<std::uint32_t>(1 + random() % 7);
    Bytes block(random() % 70);
    std::generate(block.begin(), block.end(), byte);
    const std::int32_t result = Set(selector, block);
    EXPECT_THAT(result, testing::AnyOf(kOk, kGenFailure));
    understood += result == kOk ? 1 : 0;
    EXPECT_THAT(GetResult(selector, 64), testing::AnyOf(kOk, kGenFailure));
  }
  EXPECT_GT(understood, 100);
}

TEST_F(TransferTest, SetsReturnNoBytes) {
  EXPECT_EQ(camera().Set(1, Bytes{0x12, 0, 0, 0}).bytes, 0U);
}

TEST_F(TransferTest, GetsWithoutACommandAnswerZeros) {
  EXPECT_EQ(Get(5, 64), Bytes(64, 0));
}

}  // namespace
}  // namespace virtual_camera_test
