// One line of a register or I2C list, by itself and as the one line of a file.

#include "list_reading.h"

namespace borvan_test {
namespace {

struct LineCase {
  std::string_view line;
  borvan::ListEntry entry;
};

class ListLine : public ListReadingTest {
 protected:
  void ExpectEntries(std::initializer_list<LineCase> cases) const {
    for (const LineCase& each : cases) {
      Expect(each.line, {{each.entry}, false});
    }
  }
  void ExpectSkipped(std::initializer_list<std::string_view> lines) const {
    for (const std::string_view line : lines) {
      Expect(line, {{}, false});
    }
  }
  void ExpectRefused(std::initializer_list<std::string_view> lines) const {
    for (const std::string_view line : lines) {
      Expect(line, {{}, true});
    }
  }

 private:
  void Expect(std::string_view line, const Reading& expected) const {
    EXPECT_EQ(LineByLine(line), expected) << '"' << line << '"';
    EXPECT_EQ(Read(line), expected) << '"' << line << "\" in a file";
    EXPECT_EQ(Read(std::string(line) + "\r\n"), expected) << '"' << line << "\" in a file, ended";
  }
};

TEST_F(ListLine, AddressAndValueWithOrWithoutPrefixAndClosingComma) {
  ExpectEntries({{"0x3012, 0x5a,", {0x3012, 0x5A}},
                 {"0x3012, 0x5A", {0x3012, 0x5A}},
                 {"0x3012,0x5a", {0x3012, 0x5A}},
                 {"3013,5b", {0x3013, 0x5B}},
                 {"3013,5b,", {0x3013, 0x5B}},
                 {"ABCD,ef", {0xABCD, 0xEF}},
                 {"0xAbCd,eF", {0xABCD, 0xEF}},
                 {"10,10", {0x10, 0x10}},
                 {"0xfffd, 0x12,", {0xFFFD, 0x12}}});
}

TEST_F(ListLine, FieldsAndLineAreTrimmed) {
  ExpectEntries({{"0x10 ,0x20", {0x10, 0x20}},
                 {"  0x10\t,\t0x20  ", {0x10, 0x20}},
                 {" \t 0x10 \t,\v\f 0x20 \t, ", {0x10, 0x20}},
                 {"\v\f\r 10 , 20 \v\f\r", {0x10, 0x20}},
                 {"0x10,0x20\r", {0x10, 0x20}}});
}

TEST_F(ListLine, BlankAndEmptyLinesAreSkipped) {
  ExpectSkipped({"", " ", "\t \r", "\v\f"});
}

TEST_F(ListLine, LeadingSlashesMakeARemark) {
  ExpectSkipped({"//", "// 0x10, 0x20", "//0x10,0x20,", "   // 0x10, 0x20", "\t//,"});
}

TEST_F(ListLine, SlashesElsewhereMakeNoRemark) {
  ExpectEntries({{"0x10, 0x20 // gain", {0x10, 0x20}},
                 {"0x10 // gain, 0x20", {0x10, 0x20}},
                 {"1,2 // two", {1, 2}},
                 {"3,4, // four, or so", {3, 4}},
                 {"/ 0x10, 0x20", {0x10, 0x20}},
                 {"/ /1,2", {0, 2}},
                 {"/,0x20", {0, 0x20}}});
}

TEST_F(ListLine, WithoutACommaIsSkipped) {
  ExpectSkipped({"0x10", "0x10 0x20", "end of list", "gain", "0xfff2"});
}

TEST_F(ListLine, Fff2IsDroppedInEitherCase) {
  ExpectSkipped({"0xfff2,0x01", "0xFFF2, 0x01,", "0XFFF2,1", "0xFfF2,", "  0xfff2,0x01"});
}

TEST_F(ListLine, Fff2IsComparedAsItStands) {
  ExpectEntries({{"0xfff2 ,0x01", {0xFFF2, 1}},
                 {"fff2,0x01", {0xFFF2, 1}},
                 {"0x0fff2,0x01", {0xFFF2, 1}},
                 {"0xfff20,0x01", {0xFFF20, 1}},
                 {"0xfff,0x01", {0xFFF, 1}},
                 {"0x10,0xfff2", {0x10, 0xFFF2}}});
}

TEST_F(ListLine, TextBeforeThePrefixIsDroppedInFieldsBeforeAComma) {
  ExpectEntries({{"reg 0x10, value 0x20,", {0x10, 0x20}},
                 {"reg 0x3012,val=0x5a,", {0x3012, 0x5A}},
                 {"120x10,0x20", {0x10, 0x20}},
                 {"0x10, -0x20,", {0x10, 0x20}},
                 {"0x0x12,0x0x34,", {0x12, 0x34}}});
}

TEST_F(ListLine, TheTextAfterTheLastCommaKeepsItsPrefix) {
  ExpectEntries({{"0x10, value 0x20", {0x10, 0}},
                 {"1,val=0x5a", {1, 0}},
                 {"0x10, -0x20", {0x10, 0xFFFFFFE0}},
                 {"0x10, +0x20", {0x10, 0x20}}});
}

TEST_F(ListLine, ThePrefixIsLookedForInSmallLetters) {
  ExpectEntries({{"0X10,0X20,", {0x10, 0x20}},   // the conversion takes it
                 {"reg 0X10,0X20,", {0, 0x20}},  // "reg" has no digit at its start
                 {"a0X10,0x20,", {0xA0, 0x20}}});
}

TEST_F(ListLine, ANumberEndsAtTheFirstCharacterThatIsNoDigit) {
  ExpectEntries({{"0x3012, 5a remark", {0x3012, 0x5A}},
                 {"0x3012, 5a remark, more", {0x3012, 0x5A}},
                 {"3012h, 5ag", {0x3012, 0x5A}},
                 {"no, hex", {0, 0}},
                 {"gain,value,", {0, 0}}});
}

TEST_F(ListLine, FieldsAfterTheSecondAreIgnored) {
  ExpectEntries({{"0x10, 0x20, 0x30", {0x10, 0x20}},
                 {"1,2,3,4,5", {1, 2}},
                 {"0x10, 0x20, 0x30, 0x40,", {0x10, 0x20}},
                 {"0x10,0x20,,,", {0x10, 0x20}}});
}

TEST_F(ListLine, AnEmptyFieldBeforeACommaIsAZero) {
  ExpectEntries({{",0x20", {0, 0x20}},
                 {"0x10,,", {0x10, 0}},
                 {"0x10, ,0x30", {0x10, 0}},
                 {",,", {0, 0}},
                 {", ,", {0, 0}}});
}

TEST_F(ListLine, AnAddressAloneIsRefused) {
  ExpectRefused({"0x10,", "0x10 , ", "0x3012,  \t\r", "3013,\r", "gain,"});
}

TEST_F(ListLine, OneCommaIsALineOfOneField) {
  ExpectRefused({",", " , ", "\t,\r"});
}

TEST_F(ListLine, NumbersReadAsWindowsReadsThem) {
  ExpectEntries({{"ffffffff,100000000", {0xFFFFFFFF, 0xFFFFFFFF}},
                 {"0x123456789,0x100000000,", {0xFFFFFFFF, 0xFFFFFFFF}},
                 {"-1,-100000000", {0xFFFFFFFF, 1}},
                 {"-1,+5", {0xFFFFFFFF, 5}},
                 {"123456789abcdef0123,1", {0xFFFFFFFF, 1}},
                 {"-100000000,-1,", {1, 0xFFFFFFFF}}});
}

TEST_F(ListLine, NulEndsANumberNotTheLine) {
  ExpectEntries({{std::string_view("1\0"
                                   "2,5",
                                   5),
                  {1, 5}},
                 {std::string_view("1,5\0"
                                   "6",
                                   5),
                  {1, 5}}});
}

TEST_F(ListLine, BytesAbove7FAreNeitherBlankNorDigit) {
  ExpectEntries({{"\xA0"
                  "10,0x20",
                  {0, 0x20}},
                 {"10\xA0,20\xA0", {0x10, 0x20}},
                 {"\xEF\xBB\xBF"
                  "0x10,0x20",
                  {0x10, 0x20}}});  // a byte order mark, then "0x"
}

}  // namespace
}  // namespace borvan_test
