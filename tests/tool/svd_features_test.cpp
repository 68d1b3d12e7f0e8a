// The features that maps of chip vendors use, one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "maps/map_text.h"
#include "maps/read_svd.h"
#include "maps_support.h"

namespace borvanusb::tool_test {
namespace {

// A device with these peripherals.
RegisterMap DeviceWith(const std::string& peripherals, const std::string& properties = {}) {
  return ReadSvd("<device schemaVersion=\"1.3\"><name>D</name>" + properties + "<peripherals>" +
                 peripherals + "</peripherals></device>");
}

// A device with a peripheral P at 0x1000 that has these registers.
RegisterMap Registers(const std::string& registers, const std::string& properties = {}) {
  return DeviceWith("<peripheral><name>P</name><baseAddress>0x1000</baseAddress>" + properties +
                    "<registers>" + registers + "</registers></peripheral>");
}

// The same with a register P.R that has these fields.
RegisterMap Fields(const std::string& fields) {
  return Registers("<register><name>R</name><addressOffset>0</addressOffset><fields>" + fields +
                   "</fields></register>");
}

const MapField& FieldOf(const RegisterMap& map, std::string_view of, std::string_view name) {
  const auto& fields = Named(map, of).form->fields;
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const MapField& one) { return one.name == name; });
  if (found == fields.end()) {
    throw std::runtime_error("no field " + std::string(name));
  }
  return *found;
}

std::vector<std::string> Names(const RegisterMap& map) {
  std::vector<std::string> names;
  for (const MapRegister& one : map.registers) {
    names.emplace_back(one.name);
  }
  return names;
}

using Strings = std::vector<std::string>;

TEST(SvdFeaturesTest, DefaultsOfDevicePeripheralClusterAndRegister) {
  const RegisterMap map = DeviceWith(
      "<peripheral><name>A</name><baseAddress>0</baseAddress><registers>"
      "<register><name>R</name><addressOffset>0</addressOffset></register>"
      "</registers></peripheral>"
      "<peripheral><name>B</name><baseAddress>0x100</baseAddress><size>16</size>"
      "<access>write-only</access><protection>n</protection><resetValue>0x1234</resetValue>"
      "<resetMask>0x00F0</resetMask><registers>"
      "<register><name>R</name><addressOffset>0</addressOffset></register>"
      "<cluster><name>C</name><addressOffset>0x10</addressOffset><size>8</size>"
      "<access>read-writeOnce</access><resetValue>0x56</resetValue><protection>p</protection>"
      "<register><name>R</name><addressOffset>0</addressOffset></register>"
      "<register><name>S</name><addressOffset>1</addressOffset><resetMask>0xFF</resetMask>"
      "<size>4</size></register>"
      "</cluster></registers></peripheral>",
      "<size>64</size><access>read-only</access><protection>s</protection>"
      "<resetValue>0x0123456789ABCDEF</resetValue>");
  const MapRegisterForm& device = *Named(map, "A.R").form;
  EXPECT_EQ(device.bits, 64U);
  EXPECT_EQ(device.access, MapAccess::kReadOnly);
  EXPECT_EQ(device.protection, MapProtection::kSecure);
  EXPECT_EQ(device.reset_value, 0x0123456789ABCDEFU);
  EXPECT_EQ(device.reset_mask, 0xFFFFFFFFFFFFFFFFU);
  const MapRegisterForm& peripheral = *Named(map, "B.R").form;
  EXPECT_EQ(peripheral.bits, 16U);
  EXPECT_EQ(peripheral.access, MapAccess::kWriteOnly);
  EXPECT_EQ(peripheral.protection, MapProtection::kNonSecure);
  EXPECT_EQ(peripheral.reset_value, 0x1234U);
  EXPECT_EQ(peripheral.reset_mask, 0x00F0U);
  const MapRegisterForm& cluster = *Named(map, "B.C.R").form;
  EXPECT_EQ(cluster.bits, 8U);
  EXPECT_EQ(cluster.access, MapAccess::kReadWriteOnce);
  EXPECT_EQ(cluster.protection, MapProtection::kPrivileged);
  EXPECT_EQ(cluster.reset_value, 0x56U);
  EXPECT_EQ(cluster.reset_mask, 0xF0U);
  const MapRegisterForm& own = *Named(map, "B.C.S").form;
  EXPECT_EQ(own.bits, 4U);
  EXPECT_EQ(own.reset_value, 0x6U);
  EXPECT_EQ(own.reset_mask, 0xFU);
}

TEST(SvdFeaturesTest, ArraysInArraysOfClusters) {
  const RegisterMap map = Registers(
      "<cluster><dim>2</dim><dimIncrement>0x100</dimIncrement><name>DMA[%s]</name>"
      "<addressOffset>0x40</addressOffset><headerStructName>DmaBlock</headerStructName>"
      "<cluster><dim>2</dim><dimIncrement>0x20</dimIncrement><dimIndex>c-d</dimIndex>"
      "<name>RING_%s</name><addressOffset>0x10</addressOffset>"
      "<register><dim>2</dim><dimIncrement>4</dimIncrement><dimIndex>HEAD,TAIL</dimIndex>"
      "<name>%s_PTR</name><addressOffset>8</addressOffset></register></cluster></cluster>");
  EXPECT_EQ(Names(map), (Strings{"P.DMA[0].RING_c.HEAD_PTR", "P.DMA[0].RING_c.TAIL_PTR",
                                 "P.DMA[0].RING_d.HEAD_PTR", "P.DMA[0].RING_d.TAIL_PTR",
                                 "P.DMA[1].RING_c.HEAD_PTR", "P.DMA[1].RING_c.TAIL_PTR",
                                 "P.DMA[1].RING_d.HEAD_PTR", "P.DMA[1].RING_d.TAIL_PTR"}));
  EXPECT_EQ(Named(map, "P.DMA[0].RING_c.HEAD_PTR").address, 0x1058U);
  EXPECT_EQ(Named(map, "P.DMA[0].RING_d.TAIL_PTR").address, 0x107CU);
  EXPECT_EQ(Named(map, "P.DMA[1].RING_d.TAIL_PTR").address, 0x117CU);
  EXPECT_EQ(Named(map, "P.DMA[1].RING_d.TAIL_PTR").index, "TAIL");
  EXPECT_TRUE(map.Doubts().empty());
}

TEST(SvdFeaturesTest, NumberedIndexesBeginAnywhere) {
  const RegisterMap map = Registers(
      "<register><dim>3</dim><dimIncrement>0x10</dimIncrement><dimIndex>9-11</dimIndex>"
      "<name>CH%s_CFG</name><addressOffset>#1000</addressOffset></register>");
  EXPECT_EQ(Names(map), (Strings{"P.CH9_CFG", "P.CH10_CFG", "P.CH11_CFG"}));
  EXPECT_EQ(Named(map, "P.CH11_CFG").address, 0x1028U);
  EXPECT_EQ(Named(map, "P.CH10_CFG").index, "10");
}

TEST(SvdFeaturesTest, DerivedFromByPathAndFromWhatComesLater) {
  const RegisterMap map = DeviceWith(
      "<peripheral derivedFrom=\"LATER\"><name>FIRST</name><baseAddress>0x100</baseAddress>"
      "</peripheral>"
      "<peripheral><name>LATER</name><baseAddress>0x200</baseAddress><size>8</size>"
      "<groupName>G</groupName><registers>"
      "<cluster><name>C</name><addressOffset>0x10</addressOffset>"
      "<register><name>R</name><addressOffset>1</addressOffset><resetValue>7</resetValue><fields>"
      "<field><name>F</name><bitRange>[4:2]</bitRange><access>write-only</access>"
      "<enumeratedValues><name>E</name><enumeratedValue><name>V</name><value>5</value>"
      "</enumeratedValue></enumeratedValues></field></fields></register></cluster>"
      "</registers></peripheral>"
      "<peripheral><name>OTHER</name><baseAddress>0x300</baseAddress><registers>"
      "<cluster "
      "derivedFrom=\"LATER.C\"><name>C2</name><addressOffset>0x20</addressOffset></cluster>"
      "<register derivedFrom=\"LATER.C.R\"><name>R2</name><addressOffset>0x30</addressOffset>"
      "</register>"
      "<register><name>R3</name><addressOffset>0x34</addressOffset><fields>"
      "<field derivedFrom=\"LATER.C.R.F\"><name>F2</name><bitOffset>5</bitOffset></field>"
      "<field><name>F3</name><lsb>0</lsb><msb>2</msb>"
      "<enumeratedValues derivedFrom=\"LATER.C.R.F.E\"/></field></fields></register>"
      "</registers></peripheral>"
      "<peripheral derivedFrom=\"FIRST\"><name>CHAIN</name><baseAddress>0x400</baseAddress>"
      "</peripheral>");
  EXPECT_EQ(Names(map),
            (Strings{"FIRST.C.R", "LATER.C.R", "OTHER.C2.R", "OTHER.R2", "OTHER.R3", "CHAIN.C.R"}));
  EXPECT_EQ(Named(map, "FIRST.C.R").address, 0x111U);
  EXPECT_EQ(Named(map, "CHAIN.C.R").address, 0x411U);
  EXPECT_EQ(Named(map, "CHAIN.C.R").form->bits, 8U);
  EXPECT_EQ(map.peripherals[3].group, "G");
  EXPECT_EQ(Named(map, "OTHER.C2.R").address, 0x321U);
  EXPECT_EQ(Named(map, "OTHER.R2").form->reset_value, 7U);
  const MapField& derived = FieldOf(map, "OTHER.R3", "F2");
  EXPECT_EQ(derived.bit_offset, 5U);
  EXPECT_EQ(derived.bit_width, 3U);
  EXPECT_EQ(derived.access, MapAccess::kWriteOnly);
  ASSERT_NE(derived.enumerations[0], nullptr);
  EXPECT_EQ(derived.enumerations[0]->values[0].name, "V");
  const MapField& values = FieldOf(map, "OTHER.R3", "F3");
  ASSERT_NE(values.enumerations[0], nullptr);
  ASSERT_EQ(values.enumerations[0]->values.size(), 1U);
  EXPECT_EQ(values.enumerations[0]->values[0].value, 5U);
  EXPECT_TRUE(map.Doubts().empty());
}

TEST(SvdFeaturesTest, BitRangesInEachNotation) {
  const RegisterMap map = Fields(
      "<field><name>A</name><bitOffset>0x1</bitOffset><bitWidth>#11</bitWidth></field>"
      "<field><name>B</name><msb>9</msb><lsb>4</lsb></field>"
      "<field><name>C</name><bitRange>[31:10]</bitRange></field>"
      "<field><name>D</name><bitRange>[0:0]</bitRange></field>");
  const auto place = [&](std::string_view name) {
    const MapField& field = FieldOf(map, "P.R", name);
    return std::pair(field.bit_offset, field.bit_width);
  };
  EXPECT_EQ(place("A"), std::pair(1U, 3U));
  EXPECT_EQ(place("B"), std::pair(4U, 6U));
  EXPECT_EQ(place("C"), std::pair(10U, 22U));
  EXPECT_EQ(place("D"), std::pair(0U, 1U));
  EXPECT_TRUE(map.Doubts().empty());
}

TEST(SvdFeaturesTest, EveryReadActionAndModifiedWrite) {
  const auto read = [](const std::string& word) {
    return FieldOf(Fields("<field><name>F</name><bitRange>[0:0]</bitRange><readAction>" + word +
                          "</readAction></field>"),
                   "P.R", "F")
        .read_action;
  };
  EXPECT_EQ(read("clear"), MapReadAction::kClear);
  EXPECT_EQ(read("set"), MapReadAction::kSet);
  EXPECT_EQ(read("modify"), MapReadAction::kModify);
  EXPECT_EQ(read("modifyExternal"), MapReadAction::kModifyExternal);
  const auto write = [](const std::string& word) {
    return FieldOf(Fields("<field><name>F</name><bitRange>[0:0]</bitRange><modifiedWriteValues>" +
                          word + "</modifiedWriteValues></field>"),
                   "P.R", "F")
        .modified_write;
  };
  EXPECT_EQ(write("oneToClear"), MapModifiedWrite::kOneToClear);
  EXPECT_EQ(write("oneToSet"), MapModifiedWrite::kOneToSet);
  EXPECT_EQ(write("oneToToggle"), MapModifiedWrite::kOneToToggle);
  EXPECT_EQ(write("zeroToClear"), MapModifiedWrite::kZeroToClear);
  EXPECT_EQ(write("zeroToSet"), MapModifiedWrite::kZeroToSet);
  EXPECT_EQ(write("zeroToToggle"), MapModifiedWrite::kZeroToToggle);
  EXPECT_EQ(write("clear"), MapModifiedWrite::kClear);
  EXPECT_EQ(write("set"), MapModifiedWrite::kSet);
  EXPECT_EQ(write("modify"), MapModifiedWrite::kModify);
}

TEST(SvdFeaturesTest, WriteConstraintsOfRegisters) {
  const auto constraint = [](const std::string& text) {
    return Named(Registers("<register><name>R</name><addressOffset>0</addressOffset>"
                           "<writeConstraint>" +
                           text + "</writeConstraint></register>"),
                 "P.R")
        .form->constraint;
  };
  EXPECT_EQ(constraint("<writeAsRead>true</writeAsRead>").kind,
            MapWriteConstraint::Kind::kWriteAsRead);
  EXPECT_EQ(constraint("<writeAsRead>false</writeAsRead>").kind, MapWriteConstraint::Kind::kNone);
  EXPECT_EQ(constraint("<useEnumeratedValues>1</useEnumeratedValues>").kind,
            MapWriteConstraint::Kind::kEnumeratedValues);
  const MapWriteConstraint range =
      constraint("<range><minimum>0x10</minimum><maximum>0b100000</maximum></range>");
  EXPECT_EQ(range.kind, MapWriteConstraint::Kind::kRange);
  EXPECT_EQ(range.minimum, 16U);
  EXPECT_EQ(range.maximum, 32U);
}

TEST(SvdFeaturesTest, EnumerationsForReadingAndForWriting) {
  const RegisterMap map = Fields(
      "<field><name>F</name><bitRange>[2:0]</bitRange>"
      "<enumeratedValues><usage>read</usage>"
      "<enumeratedValue><name>BUSY</name><value>#1x0</value></enumeratedValue></enumeratedValues>"
      "<enumeratedValues><usage>write</usage>"
      "<enumeratedValue><name>GO</name><value>0b011</value></enumeratedValue>"
      "<enumeratedValue><name>ANY</name><isDefault>true</isDefault></enumeratedValue>"
      "</enumeratedValues></field>"
      "<field derivedFrom=\"F\"><name>G</name><bitRange>[6:4]</bitRange></field>");
  for (const std::string_view name : {"F", "G"}) {
    const MapField& field = FieldOf(map, "P.R", name);
    ASSERT_NE(field.enumerations[1], nullptr);
    EXPECT_EQ(field.enumerations[0]->usage, MapUsage::kRead);
    EXPECT_EQ(field.enumerations[1]->usage, MapUsage::kWrite);
    const MapEnumeratedValue& busy = field.enumerations[0]->values[0];
    EXPECT_EQ(busy.value, 4U);
    EXPECT_EQ(busy.counting, 0xFFFFFFFFFFFFFFFDU);
    EXPECT_EQ(field.enumerations[1]->values[0].value, 3U);
    EXPECT_TRUE(field.enumerations[1]->values[1].is_default);
  }
  EXPECT_TRUE(map.Doubts().empty());
}

TEST(SvdFeaturesTest, AlternatesOfEachKind) {
  const RegisterMap map = Registers(
      "<register><name>A</name><addressOffset>0</addressOffset></register>"
      "<register><name>B</name><alternateRegister>A</alternateRegister><addressOffset>0"
      "</addressOffset></register>"
      "<register><name>A</name><alternateGroup>OLD</alternateGroup><addressOffset>0"
      "</addressOffset></register>"
      "<cluster><name>C</name><addressOffset>8</addressOffset>"
      "<register><name>R</name><addressOffset>0</addressOffset></register></cluster>"
      "<cluster><name>D</name><alternateCluster>C</alternateCluster><addressOffset>8"
      "</addressOffset><cluster><name>E</name><addressOffset>0</addressOffset>"
      "<register><name>R</name><addressOffset>0</addressOffset></register></cluster></cluster>");
  EXPECT_EQ(Named(map, "P.B").form->alternate_register, "A");
  EXPECT_EQ(map.registers[2].form->alternate_group, "OLD");
  EXPECT_TRUE(Named(map, "P.D.E.R").alternate);
  EXPECT_FALSE(Named(map, "P.C.R").alternate);
  EXPECT_TRUE(map.Doubts().empty());
}

TEST(SvdFeaturesTest, ReferencesToCharactersBecomeUtf8) {
  // U+00B5, U+20AC and U+1F4F7: two, three and four bytes.
  const RegisterMap map = Registers(
      "<register><name>R</name><description>&#181; &#x20AC; &#x1F4F7; &amp;</description>"
      "<addressOffset>4</addressOffset></register>");
  EXPECT_EQ(PlainText(Named(map, "P.R").form->description),
            "\xC2\xB5 \xE2\x82\xAC \xF0\x9F\x93\xB7 &");
}

TEST(SvdFeaturesTest, PrintedColumnOfNamesHasALimit) {
  const RegisterMap map = Registers(
      "<register><name>R</name><addressOffset>4</addressOffset><fields><field><name>F</name>"
      "<bitRange>[0:0]</bitRange></field><field><name>" +
      std::string(50, 'L') + "</name><bitRange>[1:1]</bitRange></field></fields></register>");
  std::string text;
  PrintMap(map, [&text](std::string_view line) { text += std::string(line) + "\n"; });
  EXPECT_NE(text.find("[0]     F" + std::string(39, ' ') + "  rw"), std::string::npos) << text;
}

// Unusual but valid XML takes the careful path of the reader.
TEST(SvdFeaturesTest, CommentsInstructionsAndCdataChangeNothing) {
  const std::string plain =
      "<register><name>R</name><description>a b</description><addressOffset>4</addressOffset>"
      "</register>";
  const std::string rare =
      "<!-- & < --><register><name>R</name ><?do <this> ?><description><![CDATA[a]]> b"
      "</description><addressOffset>4<!-- four --></addressOffset></register><!-- end -->";
  for (const std::string& text : {plain, rare}) {
    const RegisterMap map = Registers(text);
    EXPECT_EQ(Named(map, "P.R").address, 0x1004U);
    EXPECT_EQ(PlainText(Named(map, "P.R").form->description), "a b");
    EXPECT_TRUE(map.Doubts().empty());
  }
}

TEST(SvdFeaturesTest, NumbersInPieces) {
  const RegisterMap map = Registers(
      "<register><name>R</name><addressOffset>1<!-- ten -->0</addressOffset>"
      "<size><![CDATA[1]]>6</size></register>");
  EXPECT_EQ(Named(map, "P.R").address, 0x100AU);
  EXPECT_EQ(Named(map, "P.R").form->bits, 16U);
}

}  // namespace
}  // namespace borvanusb::tool_test
