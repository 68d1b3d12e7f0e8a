// One line of a register or I2C list.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string_view>

#include "files/list_file.h"

namespace borvan {
namespace {

struct LineCase {
  std::string_view line;
  ListEntry entry;
};

void ExpectEntries(std::initializer_list<LineCase> cases) {
  for (const LineCase& each : cases) {
    std::optional<ListEntry> entry;
    try {
      entry = ParseListLine(each.line);
    } catch (const std::invalid_argument&) {
      ADD_FAILURE() << '"' << each.line << "\" was refused";
      continue;
    }
    if (!entry.has_value()) {
      ADD_FAILURE() << '"' << each.line << "\" was skipped";
      continue;
    }
    EXPECT_EQ(entry->address, each.entry.address) << '"' << each.line << '"';
    EXPECT_EQ(entry->value, each.entry.value) << '"' << each.line << '"';
  }
}

void ExpectSkipped(std::initializer_list<std::string_view> lines) {
  for (const std::string_view line : lines) {
    EXPECT_EQ(ParseListLine(line), std::nullopt) << '"' << line << '"';
  }
}

void ExpectRefused(std::initializer_list<std::string_view> lines) {
  for (const std::string_view line : lines) {
    EXPECT_THROW(static_cast<void>(ParseListLine(line)), std::invalid_argument)
        << '"' << line << '"';
  }
}

TEST(ListLine, AddressAndValueWithOrWithoutPrefixAndClosingComma) {
  ExpectEntries({{"0x3012, 0x5a,", {0x3012, 0x5A}},
                 {"0x3012, 0x5A", {0x3012, 0x5A}},
                 {"0x3012,0x5a", {0x3012, 0x5A}},
                 {"3013,5b", {0x3013, 0x5B}},
                 {"3013,5b,", {0x3013, 0x5B}},
                 {"ABCD,ef", {0xABCD, 0xEF}},
                 {"0xfffd, 0x12,", {0xFFFD, 0x12}}});
}

TEST(ListLine, FieldsAndLineAreTrimmed) {
  ExpectEntries({{"0x10 ,0x20", {0x10, 0x20}},
                 {"  0x10\t,\t0x20  ", {0x10, 0x20}},
                 {"\v\f\r 10 , 20 \v\f\r", {0x10, 0x20}},
                 {"0x10,0x20\r", {0x10, 0x20}}});
}

TEST(ListLine, BlankAndEmptyLinesAreSkipped) {
  ExpectSkipped({"", " ", "\t \r", "\v\f"});
}

TEST(ListLine, LeadingSlashesMakeARemark) {
  ExpectSkipped({"//", "// 0x10, 0x20", "//0x10,0x20,", "   // 0x10, 0x20", "\t//,"});
}

TEST(ListLine, SlashesElsewhereMakeNoRemark) {
  ExpectEntries({{"0x10, 0x20 // gain", {0x10, 0x20}},
                 {"0x10 // gain, 0x20", {0x10, 0x20}},
                 {"/ 0x10, 0x20", {0x10, 0x20}},
                 {"/,0x20", {0, 0x20}}});
}

TEST(ListLine, WithoutACommaIsSkipped) {
  ExpectSkipped({"0x10", "0x10 0x20", "end of list", "0xfff2"});
}

TEST(ListLine, Fff2IsDroppedInEitherCase) {
  ExpectSkipped({"0xfff2,0x01", "0xFFF2, 0x01,", "0XFFF2,1", "0xFfF2,", "  0xfff2,0x01"});
}

TEST(ListLine, Fff2IsComparedAsItStands) {
  ExpectEntries({{"0xfff2 ,0x01", {0xFFF2, 1}},
                 {"fff2,0x01", {0xFFF2, 1}},
                 {"0x0fff2,0x01", {0xFFF2, 1}},
                 {"0xfff20,0x01", {0xFFF20, 1}},
                 {"0xfff,0x01", {0xFFF, 1}},
                 {"0x10,0xfff2", {0x10, 0xFFF2}}});
}

TEST(ListLine, TextBeforeThePrefixIsDroppedInFieldsBeforeAComma) {
  ExpectEntries({{"reg 0x10, value 0x20,", {0x10, 0x20}},
                 {"120x10,0x20", {0x10, 0x20}},
                 {"0x10, -0x20,", {0x10, 0x20}},
                 {"0x0x10,0x20,", {0x10, 0x20}}});
}

TEST(ListLine, TheTextAfterTheLastCommaKeepsItsPrefix) {
  ExpectEntries({{"0x10, value 0x20", {0x10, 0}},
                 {"0x10, -0x20", {0x10, 0xFFFFFFE0}},
                 {"0x10, +0x20", {0x10, 0x20}}});
}

TEST(ListLine, ThePrefixIsLookedForInSmallLetters) {
  ExpectEntries({{"0X10,0X20,", {0x10, 0x20}},   // the conversion takes it
                 {"reg 0X10,0x20,", {0, 0x20}},  // "reg" has no digit at its start
                 {"a0X10,0x20,", {0xA0, 0x20}}});
}

TEST(ListLine, ANumberEndsAtTheFirstCharacterThatIsNoDigit) {
  ExpectEntries({{"0x3012, 5a remark", {0x3012, 0x5A}},
                 {"0x3012, 5a remark, more", {0x3012, 0x5A}},
                 {"3012h, 5ag", {0x3012, 0x5A}},
                 {"no, hex", {0, 0}},
                 {"gain,value,", {0, 0}}});
}

TEST(ListLine, FieldsAfterTheSecondAreIgnored) {
  ExpectEntries({{"0x10, 0x20, 0x30", {0x10, 0x20}},
                 {"0x10, 0x20, 0x30, 0x40,", {0x10, 0x20}},
                 {"0x10,0x20,,,", {0x10, 0x20}}});
}

TEST(ListLine, AnEmptyFieldBeforeACommaIsAZero) {
  ExpectEntries({{",0x20", {0, 0x20}},
                 {"0x10,,", {0x10, 0}},
                 {"0x10, ,0x30", {0x10, 0}},
                 {",,", {0, 0}},
                 {", ,", {0, 0}}});
}

TEST(ListLine, AnAddressAloneIsRefused) {
  ExpectRefused({"0x10,", "0x10 , ", "3013,\r", "gain,"});
}

TEST(ListLine, OneCommaIsALineOfOneField) {
  ExpectRefused({",", " , ", "\t,\r"});
}

TEST(ListLine, NumbersReadAsWindowsReadsThem) {
  ExpectEntries({{"ffffffff,100000000", {0xFFFFFFFF, 0xFFFFFFFF}},
                 {"0x123456789,0x100000000,", {0xFFFFFFFF, 0xFFFFFFFF}},
                 {"-1,-100000000", {0xFFFFFFFF, 1}},
                 {"-100000000,-1,", {1, 0xFFFFFFFF}}});
}

TEST(ListLine, NulEndsANumberNotTheLine) {
  ExpectEntries({{std::string_view("1\0"
                                   "2,5",
                                   5),
                  {1, 5}},
                 {std::string_view("1,5\0"
                                   "6",
                                   5),
                  {1, 5}}});
}

TEST(ListLine, BytesAbove7FAreNeitherBlankNorDigit) {
  ExpectEntries({{"\xA0"
                  "10,0x20",
                  {0, 0x20}},
                 {"10\xA0,20\xA0", {0x10, 0x20}},
                 {"\xEF\xBB\xBF"
                  "0x10,0x20",
                  {0x10, 0x20}}});  // a byte order mark, then "0x"
}

}  // namespace
}  // namespace borvan
