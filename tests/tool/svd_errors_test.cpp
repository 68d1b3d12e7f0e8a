// Unusable maps, and maps with doubts.
#include <gtest/gtest.h>

#include "maps/read_svd.h"

namespace borvanusb::tool_test {
namespace {

std::string Error(const std::string& text, const MapLimits& limits = {}) {
  try {
    ReadSvd(text, limits);
  } catch (const SvdError& error) {
    return std::to_string(error.Line()) + ": " + error.what();
  }
  return "";
}

// A device with a peripheral P at 0x100 that has these registers.
std::string Device(const std::string& registers) {
  return "<device><name>D</name><peripherals><peripheral><name>P</name>"
         "<baseAddress>0x100</baseAddress>"
         "<addressBlock><offset>0</offset><size>0x20</size><usage>registers</usage></addressBlock>"
         "<registers>\n" +
         registers + "\n</registers></peripheral></peripherals></device>";
}

std::vector<std::string> Doubts(const std::string& registers) {
  std::vector<std::string> texts;
  const RegisterMap map = ReadSvd(Device(registers));
  for (const ListProblem& doubt : map.Doubts()) {
    texts.push_back(std::to_string(doubt.line) + ": " + doubt.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

TEST(SvdErrorsTest, WhatIsNoXml) {
  EXPECT_EQ(Error(""), "0: the file has no element; a CMSIS-SVD file has one element <device>");
  EXPECT_EQ(Error("<device>\n<name>D</nam></device>"),
            "2: </nam> ends <name> of line 2; allowed is </name>");
  EXPECT_EQ(Error("<device>\n<name>"), "2: <name> has no end: </name> is missing");
  EXPECT_EQ(Error("</device>"), "1: </device> ends an element that was not begun");
  EXPECT_EQ(Error("<device x=1>"),
            "1: <device>: only attributes are allowed after the name, such as "
            "derivedFrom=\"NAME\", then > or />");
  EXPECT_EQ(Error("<device><!-- "), "1: in <device>: a comment has no end: --> is missing");
  EXPECT_EQ(Error("<device>\n< name></device>").substr(0, 52),
            "2: in <device>: < is not followed by an element name");
  EXPECT_EQ(
      Error("text"),
      "1: invalid XML: expected <; the file must have one element <device> and may have comments");
  EXPECT_EQ(Error("<list/>"), "1: <list>: a register map in CMSIS-SVD is one element <device>");
  EXPECT_EQ(Error("<device/><device/>"),
            "1: <device>: a register map in CMSIS-SVD is one element <device>");
  EXPECT_EQ(Error("<device><name>D</name></device>"),
            "1: <device>: no <peripherals> with a <peripheral> in it");
}

TEST(SvdErrorsTest, DeclarationsAndEntitiesAreRefused) {
  EXPECT_EQ(
      Error("<!DOCTYPE d [<!ENTITY a \"b\">]>\n<device/>"),
      "1: <! begins a DOCTYPE or another declaration; allowed are elements, comments and CDATA");
  EXPECT_EQ(Error("<device>\n<name>&a;</name></device>"),
            "2: in <name>: & is not the start of a known entity; allowed are &amp; &lt; &gt; "
            "&quot; &apos; and numbers such as &#181;");
}

// Each error is inserted into an otherwise valid map.
TEST(SvdErrorsTest, WhatAnXmlReaderMightLetPass) {
  const std::string attributes =
      "only attributes are allowed after the name, such as derivedFrom=\"NAME\", then > or />";
  EXPECT_EQ(Error(Device("<a!b/>")), "2: <a>: " + attributes);
  EXPECT_EQ(Error(Device("<vendorExtensions><a x=\"1\"y=\"2\"/></vendorExtensions>")),
            "2: <a>: " + attributes);
  EXPECT_EQ(Error(Device("<register x=\"</register>\"></register>")),
            "2: <register>: " + attributes);
  EXPECT_EQ(Error(Device("<register x!=\"1\"/>")), "2: <register>: " + attributes);
  EXPECT_EQ(Error(Device("<register><name>A</nam></register>")),
            "2: </nam> ends <name> of line 2; allowed is </name>");
  EXPECT_EQ(Error(Device("<!-- a --> <!ENTITY a>")),
            "2: in <registers>: <! begins a DOCTYPE or another declaration; allowed are elements, "
            "comments and CDATA");
}

// The elements are nested far deeper than a stack allows.
TEST(SvdErrorsTest, DepthCannotExhaustTheStack) {
  constexpr int kDeep = 1'000'000;
  std::string deep;
  std::string hidden;
  for (int i = 0; i < kDeep; ++i) {
    deep += "<a>";
    hidden += "<a b='</a>'>";
  }
  EXPECT_EQ(Error(deep), "1: <a> is nested in 64 elements; allowed are 63");
  EXPECT_EQ(
      Error(hidden),
      "1: <a>: only attributes are allowed after the name, such as derivedFrom=\"NAME\", then > "
      "or />");
}

TEST(SvdErrorsTest, OtherEncodings) {
  EXPECT_EQ(Error("\xFF\xFE<"), "0: the file is UTF-16, which can't be read: save it as UTF-8");
  EXPECT_EQ(Error(std::string("<\0?\0x\0", 6)),
            "0: the file is UTF-16, which can't be read: save it as UTF-8");
  EXPECT_EQ(Error(std::string("<device>\n\0</device>", 19)),
            "2: the file has a zero byte; it must be UTF-8 text");
  EXPECT_EQ(ReadSvd("\xEF\xBB\xBF" + Device("")).name, "D");
}

TEST(SvdErrorsTest, LimitsHold) {
  MapLimits limits;
  limits.bytes = 100;
  EXPECT_EQ(Error(std::string(101, ' '), limits),
            "0: the file has 101 bytes; allowed are up to 100 bytes");
  std::string deep;
  for (int i = 0; i < 65; ++i) {
    deep += "<a>";
  }
  EXPECT_EQ(Error(deep), "1: <a> is nested in 64 elements; allowed are 63");
  EXPECT_EQ(
      Error(Device("<register><name>R%s</name><dim>3000000</dim><dimIncrement>4</dimIncrement>"
                   "<addressOffset>0</addressOffset></register>")),
      "2: <dim>: 3000000 elements; allowed are 2000000 registers, fields and values in a map");
  limits = {};
  limits.entries = 5;
  EXPECT_EQ(Error(Device("<cluster><name>C%s</name><dim>3</dim><dimIncrement>0</dimIncrement>"
                         "<addressOffset>0</addressOffset><register><name>R%s</name><dim>3</dim>"
                         "<dimIncrement>0</dimIncrement><addressOffset>0</addressOffset></register>"
                         "</cluster>"),
                  limits)
                .substr(0, 47),
            "2: <cluster>: the map has more than 5 registers");
}

TEST(SvdErrorsTest, CirclesAreRefused) {
  EXPECT_EQ(Error(Device("<register derivedFrom=\"B\"><name>A</name></register>\n"
                         "<register derivedFrom=\"A\"><name>B</name></register>")),
            "2: <register>: derivedFrom \"B\" leads back to A itself");
  EXPECT_EQ(Error(Device("<cluster><name>A</name><addressOffset>0</addressOffset>\n"
                         "<cluster derivedFrom=\"P.A\"><name>B</name></cluster></cluster>")),
            "3: <cluster>: derivedFrom \"P.A\" makes B contain itself");
}

TEST(SvdDoubtsTest, FieldsAndRegistersThatMeet) {
  EXPECT_EQ(
      Doubts("<register><name>R</name><addressOffset>0</addressOffset><size>8</size><fields>\n"
             "<field><name>A</name><bitRange>[3:0]</bitRange></field>\n"
             "<field><name>B</name><bitRange>[5:3]</bitRange></field>\n"
             "<field><name>A</name><bitRange>[8:7]</bitRange></field></fields></register>\n"
             "<register><name>R</name><addressOffset>0</addressOffset></register>\n"
             "<register><name>S</name><addressOffset>0x1D</addressOffset></register>"),
      (Texts{"4: field B of register R overlaps field A",
             "5: <field> A: the name occurs twice in R",
             "5: field A, bits 7 to 8, exceeds register R",
             "6: <register> P.R: the name occurs twice in P",
             // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one text in two lines
             "6: register P.R has the same address 0x00000100 as register P.R, and neither is an "
             "alternate",
             "7: register P.S at 0x0000011d lies outside the address blocks of its peripheral"}));
}

// The registers of P are not in the order of their addresses.
TEST(SvdDoubtsTest, RegistersOfTwoPeripheralsThatMeet) {
  const std::string text =
      "<device><name>D</name><peripherals><peripheral><name>P</name><baseAddress>0x100"
      "</baseAddress><registers><register><name>B</name><addressOffset>8</addressOffset></register>"
      "<register><name>A</name><addressOffset>0</addressOffset></register></registers></peripheral>"
      "\n<peripheral><name>Q</name><baseAddress>0x100</baseAddress><registers>"
      "<register><name>R</name><addressOffset>0</addressOffset></register></registers></peripheral>"
      "</peripherals></device>";
  const RegisterMap map = ReadSvd(text);
  ASSERT_EQ(map.Doubts().size(), 1U);
  EXPECT_EQ(map.Doubts()[0].text,
            "register Q.R has the same address 0x00000100 as register P.A, and neither is an "
            "alternate");
}

TEST(SvdDoubtsTest, UnknownElementsMayHaveDigitsInTheirNames) {
  EXPECT_EQ(Doubts("<register><name>R</name><addressOffset>0</addressOffset><x0>1</x0></register>"),
            Texts{"2: <x0> is not known in <register>; it is skipped"});
}

// A field for reading and one for writing may use the same bits.
TEST(SvdDoubtsTest, FieldsForReadingAndForWritingMayMeet) {
  EXPECT_EQ(
      Doubts("<register><name>R</name><addressOffset>0</addressOffset><fields>"
             "<field><name>A</name><bitRange>[3:0]</bitRange><access>read-only</access></field>"
             "<field><name>B</name><bitRange>[3:0]</bitRange><access>write-only</access></field>"
             "</fields></register>"),
      Texts());
}

TEST(SvdDoubtsTest, WhatIsMissingOrUnknown) {
  EXPECT_EQ(
      Doubts(
          "<register><name>R</name></register>\n"
          "<register><addressOffset>4</addressOffset></register>\n"
          "<register><name>S</name><addressOffset>4z</addressOffset></register>\n"
          "<register><name>T</name><addressOffset>4</addressOffset>\n"
          "<access>both</access><colour>red</colour><size>8</size><size>9</size></register>\n"
          "<register derivedFrom=\"X\"><name>U</name><addressOffset>8</addressOffset></register>\n"
          "<register><name>V%s</name><addressOffset>12</addressOffset></register>\n"
          "<register><name>W</name><dim>2</dim><dimIncrement>1</dimIncrement><dimIndex>1-3"
          "</dimIndex><addressOffset>16</addressOffset><size>8</size></register>"),
      (Texts{"2: <register> R has no usable <addressOffset>; it is skipped",
             "3: <register>  has no usable <name>; it is skipped",
             // NOLINTNEXTLINE(bugprone-suspicious-missing-comma): one text in two lines
             "4: <addressOffset> \"4z\" is not a valid number of up to 64 bits; allowed are 419, "
             "0x1a3, #1101 and 0b1101",
             "4: <register> S has no usable <addressOffset>; it is skipped",
             "6: <colour> is not known in <register>; it is skipped",
             "6: <size> occurs twice in <register> T; the first one is used",
             "6: <access> \"both\" is not known; allowed: read-only, write-only, read-write, "
             "writeOnce, read-writeOnce",
             "7: <register> derivedFrom \"X\": there is no such element; nothing is inherited",
             "8: <register> V%s: the name has %s, but there is no <dim>",
             "9: <register> W: <dim> is 2, but the name has no %s; indexes are added at its end",
             "9: <register> W: <dimIndex> \"1-3\" does not define 2 indexes; indexes from 0 are "
             "used"}));
}

TEST(SvdDoubtsTest, ValuesThatDoNotFit) {
  EXPECT_EQ(Doubts("<register><name>R</name><addressOffset>0</addressOffset><fields><field>"
                   "<name>A</name><bitRange>[1:0]</bitRange><enumeratedValues>\n"
                   "<enumeratedValue><name>V</name><value>4</value></enumeratedValue>\n"
                   "<enumeratedValue><name>W</name><value>0x</value></enumeratedValue>\n"
                   "</enumeratedValues></field></fields></register>"),
            (Texts{"3: enumerated value V = 0x4 does not fit into field A of 2 bits",
                   "4: <enumeratedValue> W has no usable <value>; it is skipped"}));
}

TEST(SvdDoubtsTest, AddressesBeyond64Bits) {
  EXPECT_EQ(Doubts("<register><name>R</name><addressOffset>0xFFFFFFFFFFFFFF00</addressOffset>"
                   "</register>"),
            (Texts{"2: <register> R: the address is beyond 64 bits; it is skipped"}));
}

}  // namespace
}  // namespace borvanusb::tool_test
