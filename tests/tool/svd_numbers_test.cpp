// Numbers and indexes in the notations of CMSIS-SVD.
#include "maps/svd_numbers.h"

#include <gtest/gtest.h>

namespace borvanusb::tool_test {
namespace {

TEST(SvdNumbersTest, AllNotations) {
  EXPECT_EQ(ParseSvdNumber("419"), 419U);
  EXPECT_EQ(ParseSvdNumber("+0x1A3"), 0x1A3U);
  EXPECT_EQ(ParseSvdNumber("0X1a3"), 0x1A3U);
  EXPECT_EQ(ParseSvdNumber("#1101"), 13U);
  EXPECT_EQ(ParseSvdNumber("0b1101"), 13U);
  EXPECT_EQ(ParseSvdNumber("4k"), 4096U);
  EXPECT_EQ(ParseSvdNumber("0x2M"), 0x200000U);
  EXPECT_EQ(ParseSvdNumber("1G"), 0x40000000U);
  EXPECT_EQ(ParseSvdNumber("1t"), 0x10000000000U);
  EXPECT_EQ(ParseSvdNumber("010"), 10U);
  EXPECT_EQ(ParseSvdNumber("0xFFFFFFFFFFFFFFFF"), 0xFFFFFFFFFFFFFFFFU);
}

TEST(SvdNumbersTest, WhatIsNoNumber) {
  for (const char* const text :
       {"", "+", "-1", "0x", "#", "#12", "0b2", "1A", "0x10000000000000000", "0xFFFFFFFFFFFFFFFFk",
        "K", "1 2", "0x1x"}) {
    EXPECT_FALSE(ParseSvdNumber(text).has_value()) << text;
  }
}

TEST(SvdNumbersTest, PatternsHaveBitsThatDoNotCount) {
  const auto pattern = ParseSvdPattern("#01x");
  ASSERT_TRUE(pattern.has_value());
  EXPECT_EQ(pattern->value, 2U);
  EXPECT_EQ(pattern->counting, 0xFFFFFFFFFFFFFFFEU);
  EXPECT_EQ(ParseSvdPattern("0bX1")->counting, 0xFFFFFFFFFFFFFFFDU);
  EXPECT_EQ(ParseSvdPattern("0x1F")->value, 0x1FU);
  EXPECT_FALSE(ParseSvdPattern("#").has_value());
  EXPECT_FALSE(ParseSvdPattern("0xx").has_value());
  EXPECT_FALSE(ParseSvdPattern("4K").has_value());
}

TEST(SvdNumbersTest, BitRanges) {
  EXPECT_EQ(ParseSvdBitRange("[7:4]"), std::pair(std::uint64_t{7}, std::uint64_t{4}));
  EXPECT_FALSE(ParseSvdBitRange("7:4").has_value());
  EXPECT_FALSE(ParseSvdBitRange("[4:7]").has_value());
  EXPECT_FALSE(ParseSvdBitRange("[]").has_value());
  EXPECT_FALSE(ParseSvdBitRange(":]").has_value());
}

TEST(SvdNumbersTest, Indexes) {
  EXPECT_EQ(ParseSvdIndexes("0-3")->count, 4U);
  EXPECT_EQ(ParseSvdIndexes("3-6")->first, 3U);
  EXPECT_EQ(ParseSvdIndexes("A-D")->kind, SvdIndexes::Kind::kLetters);
  EXPECT_EQ(ParseSvdIndexes("A, B ,C")->names, (std::vector<std::string_view>{"A", "B", "C"}));
  EXPECT_FALSE(ParseSvdIndexes("3-0").has_value());
  EXPECT_FALSE(ParseSvdIndexes("A-d").has_value());
  EXPECT_FALSE(ParseSvdIndexes("A,,C").has_value());
}

}  // namespace
}  // namespace borvanusb::tool_test
