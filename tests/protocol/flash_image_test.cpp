// How an image falls into sectors and pieces, and the percentages of bulk transfers.

#include "protocol/flash_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace borvan {
namespace {

using ::testing::ElementsAre;

struct LayoutCase {
  std::uint32_t size;
  std::uint32_t sector_count;
  std::uint64_t padded_size;
};

constexpr LayoutCase kLayouts[] = {
    {0, 0, 0},
    {1, 1, 60},
    {59, 1, 60},
    {60, 1, 60},
    {61, 1, 120},
    {119, 1, 120},
    {120, 1, 120},
    {4095, 1, 4140},  // 69 pieces
    {4096, 1, 4140},
    {4097, 2, 4140},
    {8192, 2, 8220},                     // 137 pieces
    {67108864, 16384, 67108920},         // 64 MiB: 1,118,482 pieces
    {0xFFFFFFF0, 1048576, 0xFFFFFFF0},   // 71,582,788 whole pieces
    {0xFFFFFFF1, 1048576, 0x10000002C},  // one more piece, past 2^32
    {0xFFFFFFFF, 1048576, 0x10000002C},
};

TEST(FlashImageLayout, CountsSectorsBegunAndRoundsUpToPieces) {
  for (const LayoutCase& each : kLayouts) {
    const FlashImageLayout layout = LayOutFlashImage(each.size);
    EXPECT_EQ(layout.sector_count, each.sector_count) << each.size;
    EXPECT_EQ(layout.padded_size, each.padded_size) << each.size;
  }
}

TEST(FlashImageLayout, SectorAddressesWrapAt32Bits) {
  EXPECT_EQ(SectorAddress(0xFFFFF000, 1), 0x00000000U);
  EXPECT_EQ(SectorAddress(0xFFFFFFFF, 1), 0x00000FFFU);
  EXPECT_EQ(SectorAddress(0x00000000, 1048575), 0xFFFFF000U);
  EXPECT_EQ(SectorAddress(0x00001000, 1048575), 0x00000000U);
}

TEST(FlashImagePieces, TheLastIsFilledUpWithZerosAndABlankOneFollows) {
  const std::pair<std::uint32_t, std::size_t> zeros_of_sizes[] = {{0, 0},  {1, 59},  {59, 1},
                                                                  {60, 0}, {61, 59}, {4096, 44}};
  for (const auto& [size, zeros] : zeros_of_sizes) {
    std::vector<std::uint8_t> image(size, 0xAB);
    std::vector<std::uint8_t> expected = image;
    expected.insert(expected.end(), zeros, 0x00);
    expected.insert(expected.end(), 60, 0xFF);
    PadFlashImage(image, LayOutFlashImage(size));
    EXPECT_EQ(image, expected) << size;
  }
}

TEST(FlashImagePieces, OnlySixtyErasedBytesAreBlank) {
  std::array<std::uint8_t, 60> piece;
  piece.fill(0xFF);
  EXPECT_TRUE(IsBlankPiece(piece));
  for (std::size_t at = 0; at < piece.size(); ++at) {
    piece[at] = 0xFE;
    EXPECT_FALSE(IsBlankPiece(piece)) << at;
    piece[at] = 0xFF;
  }
}

std::vector<std::int32_t> WriteReports(std::uint64_t pieces) {
  FlashWriteProgress progress(pieces * 60);
  std::vector<std::int32_t> reports;
  for (std::uint64_t piece = 0; piece < pieces; ++piece) {
    if (const auto percent = progress.NextPiece()) {
      reports.push_back(*percent);
    }
  }
  return reports;
}

std::vector<std::int32_t> OneTo(std::int32_t last) {
  std::vector<std::int32_t> numbers;
  for (std::int32_t number = 1; number <= last; ++number) {
    numbers.push_back(number);
  }
  return numbers;
}

TEST(FlashWriteProgress, ReportsEachPercentageOnceAndNever0Nor100) {
  EXPECT_THAT(WriteReports(7), ElementsAre(14, 28, 42, 57, 71, 85));
  EXPECT_EQ(WriteReports(100), OneTo(99));
  EXPECT_EQ(WriteReports(10000), OneTo(99));
}

// What a 32-bit accumulator of 6000 a piece gives, the slow way.
std::vector<std::int32_t> ModelledWriteReports(std::uint64_t pieces) {
  constexpr std::uint64_t kTwoTo32 = 4294967296;
  const std::uint64_t padded_size = pieces * 60;
  std::vector<std::int32_t> reports;
  std::uint64_t last = 0;
  for (std::uint64_t piece = 0; piece < pieces; ++piece) {
    const std::uint64_t hundredfold_offset = piece * 60 * 100;
    const std::uint64_t percent = hundredfold_offset % kTwoTo32 / padded_size;
    if (percent > last && percent != 100) {
      last = percent;
      reports.push_back(static_cast<std::int32_t>(percent));
    }
  }
  return reports;
}

TEST(FlashWriteProgress, LargestImageWithoutAWrapReaches99) {
  // The last piece starts at 42,949,620: 4,294,962,000 hundredths, below 2^32.
  EXPECT_EQ(WriteReports(715828), OneTo(99));
}

TEST(FlashWriteProgress, AccumulatorWrapsAt32Bits) {
  // 60 MB: the offset 42,949,680 starts again at 0 per cent, and 29 is never passed anew.
  EXPECT_EQ(WriteReports(1000000), OneTo(71));
  // 120 MB: 35 per cent at most, three times.
  EXPECT_EQ(WriteReports(2000000), OneTo(35));
}

TEST(FlashWriteProgress, AgreesWithTheModelAroundTheWrap) {
  for (const std::uint64_t pieces : {715827U, 715828U, 715829U, 715830U, 716000U, 2000000U}) {
    EXPECT_EQ(WriteReports(pieces), ModelledWriteReports(pieces)) << pieces;
  }
}

// Reads of `group_count` whole groups, eight groups a packet, the closing group included.
std::vector<std::int32_t> ReadReports(std::uint32_t group_count) {
  FlashReadProgress progress(group_count);
  std::vector<std::int32_t> reports;
  std::uint32_t group = 0;
  while (group <= group_count) {
    group = std::min(group + 8, group_count + 1);
    if (const auto percent = progress.After(group)) {
      reports.push_back(*percent);
    }
  }
  return reports;
}

TEST(FlashReadProgress, OvershootEndsWithReadsOf101Groups) {
  EXPECT_EQ(ReadReports(99).back(), 101);   // 100 of 99
  EXPECT_EQ(ReadReports(100).back(), 101);  // 101 of 100
  EXPECT_EQ(ReadReports(101).back(), 95);   // 102 of 101 is 100, not told
}

TEST(FlashReadProgress, LongReadsRiseBelow100) {
  EXPECT_THAT(ReadReports(101), ElementsAre(7, 15, 23, 31, 39, 47, 55, 63, 71, 79, 87, 95));
  EXPECT_EQ(ReadReports(100000), OneTo(99));
}

TEST(FlashReadProgress, NothingReadReportsNothing) {
  FlashReadProgress progress(8);
  EXPECT_EQ(progress.After(0), std::nullopt);
  EXPECT_EQ(progress.After(0), std::nullopt);
}

TEST(FlashReadProgress, NeverReportsTheSameOrALowerValue) {
  FlashReadProgress progress(100);
  EXPECT_EQ(progress.After(50), 50);
  EXPECT_EQ(progress.After(50), std::nullopt);
  EXPECT_EQ(progress.After(49), std::nullopt);
  EXPECT_EQ(progress.After(51), 51);
}

TEST(FlashReadProgress, LargestProductBelowTheWrap) {
  FlashReadProgress progress(30000000);
  EXPECT_EQ(progress.After(21474836), 71);  // 2,147,483,600
}

TEST(FlashReadProgress, ProductTurnsNegativeAbove21474836Groups) {
  FlashReadProgress progress(30000000);
  EXPECT_EQ(progress.After(21474837), std::nullopt);  // 2,147,483,700 wraps to -2,147,483,596
  EXPECT_EQ(progress.After(30000000), std::nullopt);  // 3,000,000,000 wraps to -1,294,967,296
}

TEST(FlashReadProgress, ProductOfAFull4GiBRangeWrapsManyTimes) {
  // 536,870,912 groups. 2^31 / 536,870,912 is 4, so 3 is the highest that shows.
  FlashReadProgress progress(536870912);
  EXPECT_EQ(progress.After(5368710), 1);               // 536,871,000
  EXPECT_EQ(progress.After(21474836), 3);              // 2,147,483,600
  EXPECT_EQ(progress.After(42949673), std::nullopt);   // 4,294,967,300 wraps to 4
  EXPECT_EQ(progress.After(64424509), std::nullopt);   // 6,442,450,900 wraps to 2,147,483,604: 3
  EXPECT_EQ(progress.After(536870913), std::nullopt);  // 53,687,091,300 wraps to -2,147,483,548
}

}  // namespace
}  // namespace borvan
