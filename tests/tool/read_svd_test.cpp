// Reading register maps in CMSIS-SVD: names, addresses, forms.
#include "maps/read_svd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "maps/map_text.h"
#include "maps_support.h"

namespace borvanusb::tool_test {
namespace {

RegisterMap ReadOwn(const std::string& file) {
  std::ifstream stream(std::string(BORVAN_SVD_FILES) + "/" + file, std::ios::binary);
  return ReadSvd({std::istreambuf_iterator<char>(stream), {}});
}

std::vector<std::string> Doubts(const RegisterMap& map) {
  std::vector<std::string> texts;
  for (const ListProblem& doubt : map.Doubts()) {
    texts.push_back(std::to_string(doubt.line) + ": " + doubt.text);
  }
  return texts;
}

TEST(ReadSvdTest, PropertiesAreHandedDown) {
  const RegisterMap map = ReadOwn("inheritance.svd");
  EXPECT_EQ(map.name, "INHERITANCE");
  EXPECT_EQ(PlainText(map.description), "Properties & derivations");
  ASSERT_EQ(map.peripherals.size(), 2U);
  EXPECT_EQ(PlainText(map.peripherals[0].description), "An image sensor");
  const MapRegister& control = Named(map, "SENSOR.CTRL");
  EXPECT_EQ(control.address, 0x40000000U);
  EXPECT_EQ(control.form->bits, 16U);
  EXPECT_EQ(control.form->access, MapAccess::kReadWrite);
  EXPECT_EQ(control.form->protection, MapProtection::kSecure);
  EXPECT_EQ(control.form->reset_value, 0x3344U);
  EXPECT_EQ(control.form->reset_mask, 0xFFFFU);
  EXPECT_EQ(control.form->read_action, MapReadAction::kClear);
  EXPECT_EQ(Named(map, "SENSOR.WINDOW.X").form->access, MapAccess::kReadOnly);
  EXPECT_EQ(Named(map, "SENSOR.WINDOW.Y").form->access, MapAccess::kWriteOnce);
  EXPECT_EQ(Named(map, "SENSOR.WINDOW2.INNER.Z").address, 0x40000068U);
  EXPECT_EQ(Named(map, "SENSOR2.CTRL").form->bits, 32U);
  EXPECT_EQ(Named(map, "SENSOR2.CTRL").address, 0x50000000U);
}

TEST(ReadSvdTest, DerivedRegistersInheritAndReplace) {
  const RegisterMap map = ReadOwn("inheritance.svd");
  const MapRegisterForm& form = *Named(map, "SENSOR.CTRL2").form;
  EXPECT_EQ(form.bits, 8U);
  EXPECT_EQ(form.access, MapAccess::kWriteOnly);
  EXPECT_EQ(form.reset_value, 5U);
  EXPECT_EQ(form.reset_mask, 15U);
  EXPECT_EQ(form.modified_write, MapModifiedWrite::kOneToClear);
  ASSERT_EQ(form.fields.size(), 4U);
  EXPECT_EQ(form.fields[0].name, "MODE");
  EXPECT_EQ(form.fields[0].access, MapAccess::kWriteOnly);
  const MapField& own = form.fields[3];
  EXPECT_EQ(own.name, "OWN");
  EXPECT_EQ(own.modified_write, MapModifiedWrite::kSet);
  EXPECT_EQ(own.constraint.kind, MapWriteConstraint::Kind::kRange);
  EXPECT_EQ(own.constraint.minimum, 1U);
  EXPECT_EQ(own.constraint.maximum, 2U);
  ASSERT_NE(own.enumerations[1], nullptr);
  EXPECT_EQ(own.enumerations[0]->usage, MapUsage::kWrite);
  EXPECT_EQ(own.enumerations[0]->values.size(), 4U);
  EXPECT_EQ(own.enumerations[0]->header_name, "modes_e");
  EXPECT_EQ(own.enumerations[1]->usage, MapUsage::kRead);
  // An own register replaces an inherited one of the same name.
  EXPECT_EQ(Named(map, "SENSOR2.CTRL2").address, 0x50000080U);
  EXPECT_TRUE(Named(map, "SENSOR2.CTRL2").form->fields.empty());
}

TEST(ReadSvdTest, FieldsInAllNotations) {
  const RegisterMap map = ReadOwn("inheritance.svd");
  const std::vector<MapField>& fields = Named(map, "SENSOR.CTRL").form->fields;
  ASSERT_EQ(fields.size(), 3U);
  EXPECT_EQ(fields[0].bit_offset, 0U);
  EXPECT_EQ(fields[0].bit_width, 2U);
  EXPECT_EQ(fields[0].constraint.kind, MapWriteConstraint::Kind::kEnumeratedValues);
  EXPECT_EQ(fields[1].bit_offset, 4U);
  EXPECT_EQ(fields[1].bit_width, 4U);
  EXPECT_EQ(fields[1].read_action, MapReadAction::kModifyExternal);
  EXPECT_EQ(fields[0].read_action, MapReadAction::kClear);
  EXPECT_EQ(fields[2].bit_offset, 8U);
  EXPECT_EQ(fields[2].bit_width, 2U);
  EXPECT_EQ(fields[2].constraint.kind, MapWriteConstraint::Kind::kWriteAsRead);
  const auto values = fields[2].enumerations[0]->values;
  ASSERT_EQ(values.size(), 4U);
  EXPECT_EQ(values[1].value, 1U);
  EXPECT_EQ(values[2].value, 2U);
  EXPECT_EQ(values[2].counting, ~std::uint64_t{1});
  EXPECT_TRUE(values[3].is_default);
  EXPECT_EQ(Doubts(map),
            (std::vector<std::string>{"51: field NEXT, bits 8 to 9, exceeds register CTRL2"}));
}

TEST(ReadSvdTest, ArraysAreWrittenOut) {
  const RegisterMap map = ReadOwn("arrays.svd");
  ASSERT_EQ(map.peripherals.size(), 3U);
  EXPECT_EQ(map.peripherals[1].name, "PORTB");
  EXPECT_EQ(map.peripherals[1].base, 0x2000U);
  EXPECT_EQ(PlainText(map.peripherals[1].description, map.peripherals[1].index), "Port B");
  const MapRegister& data = Named(map, "PORTB.DATA[2]");
  EXPECT_EQ(data.address, 0x2008U);
  EXPECT_EQ(PlainText(data.form->description, data.index), "Data 2");
  EXPECT_EQ(data.form, Named(map, "PORTA.DATA[0]").form);
  ASSERT_EQ(data.form->fields.size(), 4U);
  EXPECT_EQ(data.form->fields[3].name, "PIN6");
  EXPECT_EQ(data.form->fields[3].bit_offset, 24U);
  EXPECT_EQ(Named(map, "PORTA.GAIN_GREEN").address, 0x1021U);
  EXPECT_EQ(Named(map, "PORTA.CH[1].LEVEL[0]").address, 0x1054U);
  EXPECT_EQ(Named(map, "PORTA.CH[1].LEVEL[0]").index_name, "LOW");
  EXPECT_EQ(Named(map, "SINGLE.FIRST").address, 0x100004U);
  EXPECT_EQ(Named(map, "SINGLE.ALL2").address, 0x100018U);
  EXPECT_EQ(data.form->reset_mask, 0U);
  EXPECT_EQ(Doubts(map), std::vector<std::string>());
}

TEST(ReadSvdTest, AlternatesAreNoDoubt) {
  const RegisterMap map = ReadOwn("alternates.svd");
  EXPECT_EQ(Doubts(map), std::vector<std::string>());
  EXPECT_EQ(Named(map, "UART.B.R").address, 0x110U);
  EXPECT_EQ(PlainText(Named(map, "UART_OLD.DATA").form->description), "A & B < C and <\xC2\xB5>");
}

TEST(ReadSvdTest, CountsOfOwnFiles) {
  const auto counts = [](const std::string& file) {
    const MapCounts found = CountsOf(ReadOwn(file));
    return std::vector<std::uint64_t>{found.peripherals, found.registers, found.fields,
                                      found.values};
  };
  EXPECT_EQ(counts("inheritance.svd"), (std::vector<std::uint64_t>{2, 16, 10, 29}));
  EXPECT_EQ(counts("arrays.svd"), (std::vector<std::uint64_t>{3, 28, 40, 0}));
  EXPECT_EQ(counts("alternates.svd"), (std::vector<std::uint64_t>{2, 6, 0, 0}));
}

}  // namespace
}  // namespace borvanusb::tool_test
