// The transfers' request records and answers.

#include <gtest/gtest.h>

#include <array>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

// {DD880F8A-1CBA-4954-8A25-F7875967F0F7}: the first three fields low byte first, the rest in order.
constexpr std::array<std::uint8_t, 16> kPropertySet = {
    0x8A, 0x0F, 0x88, 0xDD,                          // DD880F8A
    0xBA, 0x1C,                                      // 1CBA
    0x54, 0x49,                                      // 4954
    0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7,  // 8A25-F7875967F0F7
};

class ExtensionUnitChannelTest : public DeviceTest {
 protected:
  void SetUp() override {
    Camera camera = MakeCamera(u'a');
    camera.vendor_nodes.push_back({chip, 7});
    List({camera});
    device->SelectDevice(0);
    chip->ForgetTransfers();
  }

  void AnswerWith(borvan::Result result) {
    chip->Intercept([result](const Transfer&) { return result; });
  }

  Transfer OnlyTransfer() {
    const auto transfers = chip->Transfers();
    EXPECT_EQ(transfers.size(), 1U);
    return transfers.empty() ? Transfer{} : transfers.front();
  }

 public:
  const std::shared_ptr<MemoryChip> chip = std::make_shared<MemoryChip>();
  std::array<std::uint8_t, 4> buffer = {0x11, 0x22, 0x33, 0x44};
};

TEST_F(ExtensionUnitChannelTest, LengthQueryAsksWithoutABuffer) {
  chip->ReportLength(6, 640);
  std::uint32_t length = 0;
  EXPECT_EQ(device->ChannelGetLength(6, &length), 0);
  EXPECT_EQ(length, 640U);
  const Transfer seen = OnlyTransfer();
  EXPECT_TRUE(seen.is_length_query);
  EXPECT_TRUE(seen.bytes.empty());
  EXPECT_EQ(seen.request.set, kPropertySet);
  EXPECT_EQ(seen.request.id, 6U);
  EXPECT_EQ(seen.request.flags, 0x10000001U);
  EXPECT_EQ(seen.request.node_id, 2U);  // whatever node was found
  EXPECT_EQ(seen.request.reserved, 0U);
}

TEST_F(ExtensionUnitChannelTest, SetSendsTheBufferWithTheSetFlags) {
  AnswerWith(0);
  EXPECT_EQ(device->ChannelSet(2, 3, buffer.data()), 0);
  const Transfer seen = OnlyTransfer();
  EXPECT_EQ(seen.bytes, (std::vector<std::uint8_t>{0x11, 0x22, 0x33}));
  EXPECT_EQ(seen.request.set, kPropertySet);
  EXPECT_EQ(seen.request.id, 2U);
  EXPECT_EQ(seen.request.flags, 0x10000002U);
  EXPECT_EQ(seen.request.node_id, 2U);
  EXPECT_EQ(seen.request.reserved, 0U);
}

TEST_F(ExtensionUnitChannelTest, GetFillsTheBufferWithTheGetFlags) {
  chip->ReportLength(2, 3);
  // A read of a sensor, of which the reply opens with the same bytes.
  std::array<std::uint8_t, 12> read = {0x01, 0xA2, 0xA3};
  EXPECT_EQ(device->ChannelSet(2, 12, read.data()), 0);
  chip->ForgetTransfers();
  EXPECT_EQ(device->ChannelGet(2, 3, buffer.data()), 0);
  EXPECT_EQ(buffer, (std::array<std::uint8_t, 4>{0x01, 0xA2, 0xA3, 0x44}));
  const Transfer seen = OnlyTransfer();
  EXPECT_EQ(seen.request.id, 2U);
  EXPECT_EQ(seen.request.flags, 0x10000001U);
  EXPECT_EQ(seen.request.node_id, 2U);
}

TEST_F(ExtensionUnitChannelTest, EachRequestStandsForItself) {
  std::uint32_t length = 0;
  device->ChannelSet(7, 4, buffer.data());
  device->ChannelGetLength(3, &length);
  device->ChannelGet(2, 4, buffer.data());
  const auto transfers = chip->Transfers();
  ASSERT_EQ(transfers.size(), 3U);
  EXPECT_EQ(transfers.at(0).request.id, 7U);
  EXPECT_EQ(transfers.at(0).request.flags, 0x10000002U);
  EXPECT_EQ(transfers.at(1).request.id, 3U);
  EXPECT_EQ(transfers.at(1).request.flags, 0x10000001U);
  EXPECT_EQ(transfers.at(2).request.id, 2U);
  EXPECT_EQ(transfers.at(2).request.flags, 0x10000001U);
}

TEST_F(ExtensionUnitChannelTest, LengthQueryAnsweredWithZeroReturnsItAndLeavesTheLength) {
  AnswerWith(0);
  std::uint32_t length = 77;
  EXPECT_EQ(device->ChannelGetLength(1, &length), 0);
  EXPECT_EQ(length, 77U);
}

TEST_F(ExtensionUnitChannelTest, LengthQueryThatNamesNoLengthGivesZero) {
  AnswerWith(static_cast<borvan::Result>(0x800700EA));
  std::uint32_t length = 77;
  EXPECT_EQ(device->ChannelGetLength(1, &length), 0);
  EXPECT_EQ(length, 0U);
}

TEST_F(ExtensionUnitChannelTest, OtherAnswersToALengthQueryAreReturnedAsTheyAre) {
  for (const std::uint32_t answer : {1U, 0x80070005U, 0x800700E9U, 0x80004003U}) {
    AnswerWith(static_cast<borvan::Result>(answer));
    std::uint32_t length = 77;
    EXPECT_EQ(device->ChannelGetLength(1, &length), static_cast<borvan::Result>(answer));
    EXPECT_EQ(length, 77U);
  }
}

TEST_F(ExtensionUnitChannelTest, AnswersToSetAndGetAreReturnedAsTheyAre) {
  // "More data" is the success of a length query only.
  for (const std::uint32_t answer : {1U, 0x8007001FU, 0x800700EAU}) {
    AnswerWith(static_cast<borvan::Result>(answer));
    EXPECT_EQ(device->ChannelSet(1, 4, buffer.data()), static_cast<borvan::Result>(answer));
    EXPECT_EQ(device->ChannelGet(1, 4, buffer.data()), static_cast<borvan::Result>(answer));
  }
}

TEST_F(ExtensionUnitChannelTest, NullPointersAreRefusedAndNothingIsSent) {
  EXPECT_EQ(device->ChannelGetLength(1, nullptr), kNullPointerResult);
  EXPECT_EQ(device->ChannelSet(1, 4, nullptr), kNullPointerResult);
  EXPECT_EQ(device->ChannelGet(1, 4, nullptr), kNullPointerResult);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(ExtensionUnitChannelTest, ClosedChannelIsRefused) {
  List({MakeCamera(u'b')});
  device->SelectDevice(0);
  std::uint32_t length = 77;
  EXPECT_EQ(device->ChannelGetLength(1, &length), kNullPointerResult);
  EXPECT_EQ(length, 77U);
  EXPECT_EQ(device->ChannelSet(1, 4, buffer.data()), kNullPointerResult);
  EXPECT_EQ(device->ChannelGet(1, 4, buffer.data()), kNullPointerResult);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(ExtensionUnitChannelTest, NodeIdIsThatOfTheNodeOpenedLast) {
  borvan::ExtensionUnitChannel channel;
  EXPECT_EQ(channel.NodeId(), 0U);
  channel.Open(chip, 7);
  channel.Open(chip, 5);
  EXPECT_EQ(channel.NodeId(), 5U);
}

TEST_F(ExtensionUnitChannelTest, SelectingDuringATransferLeavesTheTransferAValidControl) {
  auto short_lived = std::make_shared<MemoryChip>();
  const std::weak_ptr<MemoryChip> watched = short_lived;
  bool valid_in_transfer = false;
  short_lived->Intercept([&](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (transfer.request.id != 2) {
      return std::nullopt;
    }
    // What the host's thread may do in the middle of a job's transfer; list and channel let go.
    List({MakeCamera(u'c', chip)});
    device->SelectDevice(0);
    valid_in_transfer = !watched.expired();
    return 5;
  });
  List({MakeCamera(u'b', short_lived)});
  device->SelectDevice(0);
  short_lived.reset();
  EXPECT_EQ(device->ChannelSet(2, 4, buffer.data()), 5);
  EXPECT_TRUE(valid_in_transfer);
  EXPECT_TRUE(watched.expired());
  buffer = {0x14, 0x6C, 0x01, 0x01};  // which the chip knows
  EXPECT_EQ(device->ChannelSet(2, 4, buffer.data()), 0);
  EXPECT_EQ(chip->Sent(2).size(), 1U);
}

}  // namespace
}  // namespace borvan_test
