// The property requests that reach a vendor node's control, byte for byte.

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "scripted_camera.h"
#include "scripted_host.h"

namespace {

using test::kMoreData;
using test::kProcessingNodeType;
using test::kVendorNodeType;
using test::Transfer;

constexpr std::int32_t kNullPointer = static_cast<std::int32_t>(0x80004003);

class VendorNodeTransfer : public testing::Test {
 protected:
  VendorNodeTransfer() {
    // The vendor node's own id is 1, which must not show in any request.
    camera_.AddNode(kProcessingNodeType);
    control_ = &camera_.AddNode(kVendorNodeType).control;
    device_ = test::MakeDevice({&camera_});
    device_->SelectDevice(0);
    control_->ForgetTransfers();
  }

  Transfer OnlyTransfer() const {
    const std::vector<Transfer> transfers = control_->Transfers();
    EXPECT_EQ(transfers.size(), 1U);
    return transfers.empty() ? Transfer{} : transfers.front();
  }

  test::ScriptedCamera camera_;
  test::ScriptedControl* control_ = nullptr;
  std::unique_ptr<borvan::BorvanUsb_Q7> device_;
};

TEST_F(VendorNodeTransfer, ALengthQueryIsAGetWithoutData) {
  std::uint32_t length = 0;
  EXPECT_EQ(device_->ChannelGetLength(7, &length), 0);
  EXPECT_EQ(length, 64U);
  const Transfer transfer = OnlyTransfer();
  EXPECT_EQ(transfer.request, (std::vector<std::uint8_t>{
                                  0x8A, 0x0F, 0x88, 0xDD, 0xBA, 0x1C, 0x54, 0x49,  // set: the
                                  0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7,  // unit's GUID
                                  0x07, 0x00, 0x00, 0x00,                          // selector
                                  0x01, 0x00, 0x00, 0x10,                          // get, topology
                                  0x02, 0x00, 0x00, 0x00,                          // node
                                  0x00, 0x00, 0x00, 0x00}));                       // reserved
  EXPECT_EQ(transfer.data, nullptr);
  EXPECT_EQ(transfer.length, 0U);
  EXPECT_TRUE(transfer.count_wanted);
}

TEST_F(VendorNodeTransfer, ASetCarriesTheCallersBytes) {
  std::array<std::uint8_t, 4> block = {0x28, 0xCD, 0xAB, 0x08};
  EXPECT_EQ(device_->ChannelSet(1, 4, block.data()), 0);
  const Transfer transfer = OnlyTransfer();
  EXPECT_EQ(transfer.request, (std::vector<std::uint8_t>{
                                  0x8A, 0x0F, 0x88, 0xDD, 0xBA, 0x1C, 0x54, 0x49,  // set: the
                                  0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7,  // unit's GUID
                                  0x01, 0x00, 0x00, 0x00,                          // selector
                                  0x02, 0x00, 0x00, 0x10,                          // set, topology
                                  0x02, 0x00, 0x00, 0x00,                          // node
                                  0x00, 0x00, 0x00, 0x00}));                       // reserved
  EXPECT_EQ(transfer.bytes, (std::vector<std::uint8_t>{0x28, 0xCD, 0xAB, 0x08}));
  EXPECT_EQ(transfer.length, 4U);
  EXPECT_TRUE(transfer.count_wanted);
}

TEST_F(VendorNodeTransfer, AGetFillsTheCallersBuffer) {
  control_->SetAnswer([](void* data, ULONG length, ULONG* returned) {
    EXPECT_EQ(length, 3U);
    std::memcpy(data, "\x11\x22\x33", 3);
    *returned = 3;
    return S_OK;
  });
  std::array<std::uint8_t, 4> block = {0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(device_->ChannelGet(3, 3, block.data()), 0);
  EXPECT_EQ(block, (std::array<std::uint8_t, 4>{0x11, 0x22, 0x33, 0xEE}));
  const Transfer transfer = OnlyTransfer();
  EXPECT_EQ(transfer.request, (std::vector<std::uint8_t>{
                                  0x8A, 0x0F, 0x88, 0xDD, 0xBA, 0x1C, 0x54, 0x49,  // set: the
                                  0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7,  // unit's GUID
                                  0x03, 0x00, 0x00, 0x00,                          // selector
                                  0x01, 0x00, 0x00, 0x10,                          // get, topology
                                  0x02, 0x00, 0x00, 0x00,                          // node
                                  0x00, 0x00, 0x00, 0x00}));                       // reserved
}

TEST_F(VendorNodeTransfer, ALengthQueryAnsweredWithMoreDataGivesTheBytesReturned) {
  control_->SetAnswer([](void*, ULONG, ULONG* returned) {
    *returned = 11;
    return kMoreData;
  });
  std::uint32_t length = 0xEEEEEEEE;
  EXPECT_EQ(device_->ChannelGetLength(3, &length), 0);
  EXPECT_EQ(length, 11U);
}

TEST_F(VendorNodeTransfer, ALengthQueryAnsweredWithZeroLeavesTheLengthUntouched) {
  control_->SetAnswer([](void*, ULONG, ULONG* returned) {
    *returned = 11;
    return S_OK;
  });
  std::uint32_t length = 0xEEEEEEEE;
  EXPECT_EQ(device_->ChannelGetLength(3, &length), 0);
  EXPECT_EQ(length, 0xEEEEEEEEU);
}

TEST_F(VendorNodeTransfer, AnyOtherAnswerToALengthQueryIsPassedOn) {
  const std::array<std::uint32_t, 3> results = {0x80070490, 0x80004005, 0x00000001};
  for (const std::uint32_t result : results) {
    control_->SetAnswer([result](void*, ULONG, ULONG* returned) {
      *returned = 11;
      return static_cast<HRESULT>(result);
    });
    std::uint32_t length = 0xEEEEEEEE;
    EXPECT_EQ(device_->ChannelGetLength(3, &length), static_cast<std::int32_t>(result));
    EXPECT_EQ(length, 0xEEEEEEEEU);
  }
}

TEST_F(VendorNodeTransfer, TheAnswersOfSetsAndGetsArePassedOn) {
  const std::array<std::uint32_t, 3> results = {0x8007001F, 0x800700EA, 0x00000005};
  std::uint8_t byte = 0;
  for (const std::uint32_t result : results) {
    control_->SetAnswer([result](void*, ULONG, ULONG*) { return static_cast<HRESULT>(result); });
    EXPECT_EQ(device_->ChannelSet(1, 1, &byte), static_cast<std::int32_t>(result));
    EXPECT_EQ(device_->ChannelGet(1, 1, &byte), static_cast<std::int32_t>(result));
  }
}

TEST_F(VendorNodeTransfer, NullPointersAreRefusedWithoutATransfer) {
  EXPECT_EQ(device_->ChannelGetLength(1, nullptr), kNullPointer);
  EXPECT_EQ(device_->ChannelSet(1, 4, nullptr), kNullPointer);
  EXPECT_EQ(device_->ChannelGet(1, 4, nullptr), kNullPointer);
  EXPECT_EQ(control_->Transfers().size(), 0U);
}

TEST_F(VendorNodeTransfer, SelectingReadsTheFeatureRegister) {
  device_->SelectDevice(0);
  const std::vector<Transfer> transfers = control_->Transfers();
  ASSERT_EQ(transfers.size(), 4U) << "a length query, two sets and a get";
  EXPECT_EQ(transfers[0].request[16], 0x01) << "selector";
  ASSERT_EQ(transfers[1].bytes.size(), 64U);
  ASSERT_EQ(transfers[2].bytes.size(), 64U);
  // 0x1A3: its low half with the tag 0x18, its high half with the tag 0x58.
  const auto head = [](const Transfer& transfer) {
    return std::vector<std::uint8_t>(transfer.bytes.begin(), transfer.bytes.begin() + 4);
  };
  EXPECT_EQ(head(transfers[1]), (std::vector<std::uint8_t>{0x24, 0xA3, 0x01, 0x18}));
  EXPECT_EQ(head(transfers[2]), (std::vector<std::uint8_t>{0x24, 0x00, 0x00, 0x58}));
  EXPECT_EQ(transfers[3].request[20], 0x01) << "get";
}

}  // namespace
