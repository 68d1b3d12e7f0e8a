// Numbers, sizes and ranges as written on a command line.
#include "base/numbers.h"

#include <gtest/gtest.h>

namespace borvanusb::tool_test {
namespace {

TEST(NumbersTest, NumberIsDecimalOrHexadecimal) {
  EXPECT_EQ(ParseNumber("419"), 419U);
  EXPECT_EQ(ParseNumber("0x1a3"), 0x1A3U);
  EXPECT_EQ(ParseNumber("0XFFFFFFFF"), 0xFFFFFFFFU);
  EXPECT_EQ(ParseNumber("18446744073709551615"), 0xFFFFFFFFFFFFFFFFU);
}

TEST(NumbersTest, AnythingElseIsNoNumber) {
  for (const char* text :
       {"", "0x", "1a3", "-1", "+1", " 1", "1 ", "0x1g", "1.5", "18446744073709551616", "0x-1"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(NumbersTest, SizeMayEndInKOrM) {
  EXPECT_EQ(ParseSize("256K"), 262144U);
  EXPECT_EQ(ParseSize("4m"), 4194304U);
  EXPECT_EQ(ParseSize("0x10k"), 16384U);
  EXPECT_EQ(ParseSize("12"), 12U);
  EXPECT_EQ(ParseSize("K"), std::nullopt);
  EXPECT_EQ(ParseSize("1G"), std::nullopt);
  EXPECT_EQ(ParseSize("18446744073709551615K"), std::nullopt);
}

TEST(NumbersTest, RangeIsOneAddressOrTwoOrAnAddressAndASize) {
  EXPECT_EQ(ParseRange("0x1000"), (Range{0x1000, 0x1000}));
  EXPECT_EQ(ParseRange("0x1000-0x1fff"), (Range{0x1000, 0x1FFF}));
  EXPECT_EQ(ParseRange("0x1000+256"), (Range{0x1000, 0x10FF}));
  EXPECT_EQ(ParseRange("64K+4K"), (Range{0x10000, 0x10FFF}));
  EXPECT_EQ(ParseRange("0+0x100000000"), (Range{0, 0xFFFFFFFF}));
  EXPECT_EQ(ParseRange("0xffffffff+1"), (Range{0xFFFFFFFF, 0xFFFFFFFF}));
}

TEST(NumbersTest, AnythingElseIsNoRange) {
  for (const char* text : {"", "-", "+", "5-", "-5", "5+", "5+0", "6-5", "1-2-3", "0xffffffff+2",
                           "0x100000000", "0-0x100000000", "1 - 2", "1..2"}) {
    EXPECT_EQ(ParseRange(text), std::nullopt) << text;
  }
}

TEST(NumbersTest, RangeAndSizeTextsReadBack) {
  EXPECT_EQ(Text(Range{0x1000, 0x1FFF}), "0x1000-0x1fff");
  EXPECT_EQ(Text(Range{5, 5}), "0x5");
  EXPECT_EQ((Range{0, 0xFFFFFFFF}.Size()), 0x100000000U);
  EXPECT_EQ(Hex(0x1A3), "0x1a3");
  EXPECT_EQ(Hex(0x1A3, 8), "0x000001a3");
  EXPECT_EQ(Hex(0), "0x0");
  EXPECT_EQ(SizeText(1), "1 byte");
  EXPECT_EQ(SizeText(300), "300 bytes");
  EXPECT_EQ(SizeText(262144), "262144 bytes (256 KiB)");
  EXPECT_EQ(SizeText(4194304), "4194304 bytes (4 MiB)");
}

}  // namespace
}  // namespace borvanusb::tool_test
