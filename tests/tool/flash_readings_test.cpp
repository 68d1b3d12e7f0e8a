// How each reading splits a range into different packets, and which readings are accepted.
#include "camera/flash_readings.h"

#include <gtest/gtest.h>

#include <numeric>

namespace borvanusb::tool_test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Pieces = std::vector<FlashPiece>;

TEST(CutReadingTest, FirstReadingIsOnePieceWhoseLastByteIsReadApartAtTheRangesEnd) {
  EXPECT_EQ(CutReading(0x1000, 0x100, 0, true), (Pieces{{0x1000, 0x100, true}}));
  EXPECT_EQ(CutReading(0x1000, 0x100, 0, false), (Pieces{{0x1000, 0x100, false}}));
  EXPECT_EQ(CutReading(0x1000, 0x101, 0, true), (Pieces{{0x1000, 0x101, false}}));
}

TEST(CutReadingTest, OtherReadingsBeginBeforeTheRange) {
  EXPECT_EQ(CutReading(0x1000, 0x100, 32, false), (Pieces{{0xFE0, 0x120, false}}));
}

TEST(CutReadingTest, LastPacketOfTheRangeIsReadAsItLies) {
  EXPECT_EQ(CutReading(0x1000, 0x100, 32, true),
            (Pieces{{0xFE0, 0xE0, false}, {0x10C0, 0x40, true}}));
  EXPECT_EQ(CutReading(0x1000, 0x0C1, 16, true),
            (Pieces{{0xFF0, 0xD0, false}, {0x10C0, 0x01, false}}));
}

TEST(CutReadingTest, NothingBeforeTheFlashIsAskedFor) {
  EXPECT_EQ(CutReading(0, 0x100, 32, true),
            (Pieces{{0, 0x20, false}, {0x20, 0xA0, false}, {0xC0, 0x40, true}}));
  EXPECT_EQ(CutReading(8, 0x80, 16, false), (Pieces{{8, 0x30, false}, {0x38, 0x50, false}}));
}

TEST(CutReadingTest, SinglePacketHasNoOtherCut) {
  EXPECT_EQ(CutReading(0x1000, 64, 32, true), (Pieces{{0x1000, 64, true}}));
  EXPECT_EQ(CutReading(0x1000, 4, 32, true), (Pieces{{0x1000, 4, false}}));
}

// For a piece of whole packets, the library requests one more packet.
TEST(CutReadingTest, NoPieceAsksForAPacketBehindTheRange) {
  for (const std::uint32_t address : {0U, 8U, 0x1000U}) {
    for (std::uint64_t size = 1; size <= 260; ++size) {
      for (const std::uint32_t shift : kReadingShifts) {
        std::uint64_t next = address;
        for (const FlashPiece& piece : CutReading(address, size, shift, true)) {
          const std::uint64_t job = piece.size - (piece.last_byte_apart ? 1 : 0);
          const std::uint64_t last_asked = piece.address + job / kReadPacket * kReadPacket;
          ASSERT_LE(last_asked, address + size - 1) << address << " " << size << " " << shift;
          // No reading requests packets beyond those of the range, like the first reading.
          ASSERT_LE(last_asked + kReadPacket,
                    address + (size + kReadPacket - 1) / kReadPacket * kReadPacket);
          ASSERT_LE(piece.address, next);
          next = piece.address + piece.size;
        }
        ASSERT_EQ(next, address + size) << address << " " << size << " " << shift;
      }
    }
  }
}

Bytes Rising(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<std::uint8_t>(i % 251);
  }
  return bytes;
}

TEST(FlashReadingsTest, OneReadingIsNotBelieved) {
  FlashReadings readings(100);
  readings.Add(0, Rising(100));
  ASSERT_TRUE(readings.Open());
  EXPECT_EQ(readings.Open()->offset, 0U);
  EXPECT_EQ(readings.Open()->size, 100U);
}

TEST(FlashReadingsTest, TwoReadingsThatAgreeAre) {
  FlashReadings readings(100);
  readings.Add(0, Rising(100));
  readings.Add(0, Rising(100));
  EXPECT_FALSE(readings.Open());
  EXPECT_EQ(readings.Take(), Rising(100));
}

TEST(FlashReadingsTest, OnlyWhatDiffersIsReadAgain) {
  FlashReadings readings(300);
  Bytes wrong = Rising(300);
  wrong[64] ^= 1U;
  wrong[191] ^= 1U;
  readings.Add(0, wrong);
  readings.Add(0, Rising(300));
  ASSERT_TRUE(readings.Open());
  EXPECT_EQ(readings.Open()->offset, 64U);
  EXPECT_EQ(readings.Open()->size, 128U);
  const Bytes all = Rising(300);
  readings.Add(64, Bytes(all.begin() + 64, all.begin() + 192));
  EXPECT_FALSE(readings.Open());
  EXPECT_EQ(readings.Take(), all);
}

TEST(FlashReadingsTest, PacketThatAgreesInPartIsOpen) {
  FlashReadings readings(64);
  Bytes one = Rising(64);
  Bytes other = Rising(64);
  one[63] = 0;
  other[63] = 1;
  readings.Add(0, one);
  readings.Add(0, other);
  EXPECT_TRUE(readings.Open());
  readings.Add(0, Rising(64));
  EXPECT_TRUE(readings.Open()) << "three readings, three contents";
  readings.Add(0, Rising(64));
  EXPECT_EQ(readings.Take(), Rising(64));
}

TEST(FlashReadingsTest, LastPacketMayBeShort) {
  FlashReadings readings(65);
  Bytes wrong = Rising(65);
  wrong[64] ^= 1U;
  readings.Add(0, Rising(65));
  readings.Add(0, wrong);
  ASSERT_TRUE(readings.Open());
  EXPECT_EQ(readings.Open()->offset, 64U);
  EXPECT_EQ(readings.Open()->size, 1U);
  readings.Add(64, {wrong[64]});
  EXPECT_EQ(readings.Take(), wrong);
}

}  // namespace
}  // namespace borvanusb::tool_test
