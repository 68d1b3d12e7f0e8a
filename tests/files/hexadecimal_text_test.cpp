// Numbers as text: on every build the results of the Windows runtime, whose `long` has 32 bits.

#include "base/hexadecimal_text.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <cstdlib>
#include <cwchar>
#endif

namespace borvan {
namespace {

struct UnsignedCase {
  const char* text;
  std::uint32_t low32;      // strtoul(text, NULL, 16)
  std::uint32_t low_of_64;  // _strtoui64(text, NULL, 16), cut to 32 bits
};

constexpr UnsignedCase kUnsignedCases[] = {
    {"", 0, 0},
    {" ", 0, 0},
    {"0", 0, 0},
    {"5a", 0x5A, 0x5A},
    {"5A", 0x5A, 0x5A},
    {"aBcDeF", 0xABCDEF, 0xABCDEF},
    {"1a3", 0x1A3, 0x1A3},
    // Blanks: the six of ASCII before the number, none inside.
    {"  12", 0x12, 0x12},
    {"\t\n\v\f\r 12", 0x12, 0x12},
    {"12 34", 0x12, 0x12},
    {"\xA0"
     "12",
     0, 0},
    // The conversion ends at the first character that is no digit.
    {"12g4", 0x12, 0x12},
    {"zz", 0, 0},
    {"5a // gain", 0x5A, 0x5A},
    {"1.5", 1, 1},
    {",1", 0, 0},
    // Prefix.
    {"0x12", 0x12, 0x12},
    {"0X12", 0x12, 0x12},
    {"0x", 0, 0},
    {"0xg", 0, 0},
    {"0x0x12", 0, 0},
    {"00x12", 0, 0},
    {"x12", 0, 0},
    {" 0x12", 0x12, 0x12},
    // Signs.
    {"+12", 0x12, 0x12},
    {"+0x12", 0x12, 0x12},
    {" +12", 0x12, 0x12},
    {"+", 0, 0},
    {"-", 0, 0},
    {"--1", 0, 0},
    {"+-1", 0, 0},
    {"- 1", 0, 0},
    {"-0", 0, 0},
    {"-1", 0xFFFFFFFF, 0xFFFFFFFF},
    {"-0x1", 0xFFFFFFFF, 0xFFFFFFFF},
    {"-80000000", 0x80000000, 0x80000000},
    {"-ffffffff", 1, 1},
    // At and past 32 bits.
    {"7fffffff", 0x7FFFFFFF, 0x7FFFFFFF},
    {"80000000", 0x80000000, 0x80000000},
    {"ffffffff", 0xFFFFFFFF, 0xFFFFFFFF},
    {"00000000000000000000ffffffff", 0xFFFFFFFF, 0xFFFFFFFF},
    {"100000000", 0xFFFFFFFF, 0},
    {"123456789", 0xFFFFFFFF, 0x23456789},
    {"-100000000", 1, 0},
    {"-123456789", 1, 0xDCBA9877},
    // At and past 64 bits.
    {"ffffffffffffffff", 0xFFFFFFFF, 0xFFFFFFFF},
    {"fedcba9876543210", 0xFFFFFFFF, 0x76543210},
    {"10000000000000000", 0xFFFFFFFF, 0xFFFFFFFF},
    {"123456789abcdef01", 0xFFFFFFFF, 0xFFFFFFFF},
    {"10000000000000000000000000000000000", 0xFFFFFFFF, 0xFFFFFFFF},
    {"-10000000000000000", 1, 1},
};

struct SignedCase {
  const char* text;
  const char16_t* wide;
  std::int32_t value;  // strtol and wcstol, base 16
};

constexpr std::int32_t kLargest = 2147483647;
constexpr std::int32_t kSmallest = -2147483647 - 1;

constexpr SignedCase kSignedCases[] = {
    {"", u"", 0},
    {"20", u"20", 32},
    {"ff", u"ff", 255},
    {"FF", u"FF", 255},
    {" \t0xfF", u" \t0xfF", 255},
    {"0X20", u"0X20", 32},
    {"0x", u"0x", 0},
    {"1234", u"1234", 0x1234},
    {"12&p", u"12&p", 0x12},
    {"&pid", u"&pid", 0},
    {"b#vi", u"b#vi", 0xB},
    {"-1", u"-1", -1},
    {"+7f", u"+7f", 127},
    {"-7fffffff", u"-7fffffff", -kLargest},
    {"7fffffff", u"7fffffff", kLargest},
    {"80000000", u"80000000", kLargest},
    {"ffffffff", u"ffffffff", kLargest},
    {"-80000000", u"-80000000", kSmallest},
    {"-80000001", u"-80000001", kSmallest},
    {"ffffffffffffffff", u"ffffffffffffffff", kLargest},
    {"10000000000000000", u"10000000000000000", kLargest},
    {"-10000000000000000", u"-10000000000000000", kSmallest},
};

TEST(HexadecimalText, ReadsUnsignedNumbersAsWindowsDoes) {
  for (const UnsignedCase& each : kUnsignedCases) {
    SCOPED_TRACE(each.text);
    EXPECT_EQ(ParseUnsignedLong(each.text), each.low32);
    EXPECT_EQ(ParseUnsigned64Low(each.text), each.low_of_64);
  }
}

TEST(HexadecimalText, SignedNumbersStopAtTheirLimits) {
  for (const SignedCase& each : kSignedCases) {
    SCOPED_TRACE(each.text);
    EXPECT_EQ(ParseLong(std::string_view(each.text)), each.value);
    EXPECT_EQ(ParseLong(std::u16string_view(each.wide)), each.value);
  }
}

TEST(HexadecimalText, WideCharactersOutsideAsciiAreNoDigits) {
  EXPECT_EQ(ParseLong(std::u16string_view(u"1\u0130")), 1);  // its low byte is the digit "0"
  EXPECT_EQ(ParseLong(std::u16string_view(u"\u0131\u0132")), 0);
}

TEST(HexadecimalText, NulEndsANumber) {
  EXPECT_EQ(ParseUnsignedLong(std::string_view("12\0"
                                               "34",
                                               5)),
            0x12U);
  EXPECT_EQ(ParseUnsigned64Low(std::string_view("\0"
                                                "34",
                                                3)),
            0U);
  EXPECT_EQ(ParseLong(std::u16string_view(u"1\0"
                                          u"2",
                                          3)),
            1);
}

TEST(HexadecimalText, ReadsNothingPastTheEndOfAText) {
  constexpr std::string_view kAll = "0x1234";
  EXPECT_EQ(ParseUnsignedLong(kAll.substr(0, 1)), 0U);
  EXPECT_EQ(ParseUnsignedLong(kAll.substr(0, 2)), 0U);
  EXPECT_EQ(ParseUnsignedLong(kAll.substr(0, 3)), 1U);
  EXPECT_EQ(ParseUnsignedLong(kAll.substr(2, 2)), 0x12U);
}

TEST(HexadecimalText, FormatsInLowerCaseWithoutAPrefix) {
  EXPECT_EQ(FormatHex(0), "0");
  EXPECT_EQ(FormatHex(0xA), "a");
  EXPECT_EQ(FormatHex(0x1A3), "1a3");
  EXPECT_EQ(FormatHex(0x80001234), "80001234");
  EXPECT_EQ(FormatHex(0xFEDCBA9876543210), "fedcba9876543210");
  EXPECT_EQ(FormatHex(0xFFFFFFFFFFFFFFFF), "ffffffffffffffff");
  // Eight digits, two digits.
  EXPECT_EQ(FormatHex8(0), "00000000");
  EXPECT_EQ(FormatHex8(0x1A3), "000001a3");
  EXPECT_EQ(FormatHex8(0xFFFFFFFF), "ffffffff");
  EXPECT_EQ(FormatHexByte(0x00), "00");
  EXPECT_EQ(FormatHexByte(0x0F), "0f");
  EXPECT_EQ(FormatHexByte(0xA0), "a0");
  EXPECT_EQ(FormatHexByte(0xFF), "ff");
}

#ifdef _WIN32
// The tables themselves, against the runtime that they describe.
TEST(HexadecimalText, TablesHoldForTheRuntime) {
  for (const UnsignedCase& each : kUnsignedCases) {
    EXPECT_EQ(std::strtoul(each.text, nullptr, 16), each.low32) << '"' << each.text << '"';
    EXPECT_EQ(static_cast<std::uint32_t>(_strtoui64(each.text, nullptr, 16)), each.low_of_64)
        << '"' << each.text << '"';
  }
  for (const SignedCase& each : kSignedCases) {
    EXPECT_EQ(std::strtol(each.text, nullptr, 16), each.value) << '"' << each.text << '"';
    const std::wstring wide(each.wide, each.wide + std::u16string_view(each.wide).size());
    EXPECT_EQ(std::wcstol(wide.c_str(), nullptr, 16), each.value) << '"' << each.text << '"';
  }
}
#endif

}  // namespace
}  // namespace borvan
