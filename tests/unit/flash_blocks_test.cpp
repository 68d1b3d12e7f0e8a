// Command blocks of selectors 3, 4 and 5.

#include "protocol/flash_blocks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace borvan {
namespace {

using Bytes = std::vector<std::uint8_t>;
using ::testing::ElementsAre;

TEST(FlashBlocks, WordWrite) {
  EXPECT_THAT(FlashWriteWord(0x00001000, 0x01020304),
              ElementsAre(0x38,                    // "8"
                          0x00, 0x00, 0x10, 0x00,  // address
                          0x01, 0x02, 0x03, 0x04,  // value
                          0x00, 0x00));            // spare
}

TEST(FlashBlocks, WordWriteIsBigEndian) {
  EXPECT_THAT(FlashWriteWord(0x12345678, 0x9ABCDEF0),
              ElementsAre(0x38, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 0x00, 0x00));
}

TEST(FlashBlocks, WordReadCarriesNoData) {
  EXPECT_THAT(FlashReadWord(0x12345678),
              ElementsAre(0x34,                    // "4"
                          0x12, 0x34, 0x56, 0x78,  // address
                          0x00, 0x00, 0x00, 0x00,  // data, filled by the device
                          0x00, 0x00));            // spare
}

TEST(FlashBlocks, EraseIsNotAlignedDown) {
  EXPECT_THAT(FlashEraseSector(0x00000001),
              ElementsAre(0x32,                                  // "2"
                          0x00, 0x00, 0x00, 0x01,                // address as given
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00));  // zero
}

TEST(FlashBlocks, WordReplyIsTextInFlashOrder) {
  EXPECT_EQ(FlashWordValue(Bytes{0x34, 0x00, 0x00, 0x10, 0x00, 0xDE, 0xAD, 0xBE, 0xEF, 0x77, 0x88}),
            "deadbeef");
}

TEST(FlashBlocks, WordReplyKeepsLeadingZeros) {
  EXPECT_EQ(FlashWordValue(Bytes{0x34, 0, 0, 0, 0, 0x00, 0x01, 0x0A, 0x00, 0, 0}), "00010a00");
}

TEST(FlashBlocks, WordReplyMustEchoTheReadCommand) {
  for (unsigned first = 0; first <= 0xFF; ++first) {
    const Bytes reply{static_cast<std::uint8_t>(first), 0, 0, 0, 0, 1, 2, 3, 4, 0, 0};
    EXPECT_EQ(FlashWordValue(reply).has_value(), first == 0x34) << first;
  }
}

TEST(FlashBlocks, WritePacketIsAddressAndSixtyBytes) {
  std::array<std::uint8_t, 60> piece{};
  piece.front() = 0xA1;
  piece[30] = 0x5A;
  piece.back() = 0xA2;
  const Packet packet = FlashWritePacket(0x12345678, piece);
  EXPECT_THAT(packet, ElementsAre(0x12, 0x34, 0x56, 0x78,  // address
                                                           // 4 to 63: the piece
                                  0xA1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,     //
                                  0x5A, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xA2));
}

TEST(FlashBlocks, FastReadRequestIsAnAddressAndZeros) {
  Packet expected{};
  expected[0] = 0xFE;
  expected[1] = 0xDC;
  expected[2] = 0xBA;
  expected[3] = 0x98;
  EXPECT_EQ(FlashReadRequest(0xFEDCBA98), expected);
}

}  // namespace
}  // namespace borvan
