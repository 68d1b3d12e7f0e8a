// The values that lists write to registers.
#include <gtest/gtest.h>

#include "registers/written_registers.h"

namespace borvanusb::tool_test {
namespace {

std::vector<ListEntry> EntriesOf(const std::string& text) {
  return ReadListText(text).entries;
}

RegisterValues Registers(const std::string& text, ListMarkers markers = ListMarkers::kDelays) {
  return WrittenRegisters(EntriesOf(text), markers);
}

TEST(WrittenRegistersTest, LastWriteWinsAndMarkersAndPausesAreNoRegisters) {
  EXPECT_EQ(Registers("fffd,0\nfffe,0\n100,11\nffff,5\n101,22\n100,33\n"),
            (RegisterValues{{0x100, 0x33}, {0x101, 0x22}}));
}

TEST(WrittenRegistersTest, MarkersAreThePageOfTheRegistersBehindThemWhereTheChipTakesThemSo) {
  const std::string list = "fffd,12\nfffe,34\n100,11\nfffd,0\nfffe,0\n100,22\n";
  EXPECT_EQ(Registers(list), (RegisterValues{{0x100, 0x22}}));
  EXPECT_EQ(Registers(list, ListMarkers::kPage),
            (RegisterValues{{0x12340100, 0x11}, {0x100, 0x22}}));
}

TEST(WrittenRegistersTest, FirstMarkerAloneClearsTheSecondAndTheSecondAloneKeepsTheFirst) {
  EXPECT_EQ(Registers("fffd,1\nfffe,2\n10,1\nfffd,3\n10,2\nfffe,4\n10,3\n", ListMarkers::kPage),
            (RegisterValues{{0x01020010, 1}, {0x03000010, 2}, {0x03040010, 3}}));
}

// 22 adjacent registers are one block, which uses the markers of its first register.
TEST(WrittenRegistersTest, MarkersWithinABlockArePassedOver) {
  std::string list = "fffd,0\nfffe,5\n";
  const std::string digits = "0123456789abcdef";
  for (unsigned i = 0; i < 22; ++i) {
    list += i == 7 ? "fffe,6\n" : "";
    list += std::string("1") + digits[i / 16] + digits[i % 16] + ",1\n";
  }
  list += "200,1\n";
  const RegisterValues values = Registers(list, ListMarkers::kPage);
  EXPECT_EQ(values.size(), 23U);
  EXPECT_EQ(values.count(0x50107), 1U);
  EXPECT_EQ(values.count(0x50115), 1U);
  EXPECT_EQ(values.count(0x50200), 1U);
}

TEST(WrittenRegistersTest, FirstMarkedRegisterIsTheFirstThatAMarkerOtherThanZeroGoesWith) {
  EXPECT_EQ(FirstMarkedRegister(EntriesOf("fffd,0\nfffe,0\n100,11\n")), nullptr);
  const std::vector<ListEntry> entries = EntriesOf("fffd,0\n100,11\nfffe,7\n101,22\n102,33\n");
  ASSERT_NE(FirstMarkedRegister(entries), nullptr);
  EXPECT_EQ(FirstMarkedRegister(entries)->line, 4U);
}

std::map<I2cRegister, std::uint32_t> I2c(const std::string& text,
                                         const std::optional<I2cTarget>& opening = {}) {
  return WrittenByI2cList(EntriesOf(text), opening).values;
}

using I2cValues = std::map<I2cRegister, std::uint32_t>;

TEST(WrittenI2cRegistersTest, EachSlaveHasItsOwnRegistersAndWidth) {
  EXPECT_EQ(
      I2c("fff8,6c\nfffe,3\n3012,5a\nfff8,48\nfffe,1\n12,5b\nfff8,20\nfffe,4\n3012,1234\n"),
      (I2cValues{{{0x6C, 1, 0x3012}, 0x5A}, {{0x48, 0, 0x12}, 0x5B}, {{0x20, 2, 0x3012}, 0x1234}}));
}

TEST(WrittenI2cRegistersTest, SlaveAloneKeepsTheWidth) {
  EXPECT_EQ(I2c("fff8,6c\nfffe,3\n3012,5a\nfff8,6d\n3012,5b\n"),
            (I2cValues{{{0x6C, 1, 0x3012}, 0x5A}, {{0x6D, 1, 0x3012}, 0x5B}}));
}

TEST(WrittenI2cRegistersTest, LastWriteWinsPausesAndPassedOverEntriesAreNoRegisters) {
  EXPECT_EQ(I2c("fff8,6c\nffff,5\nfef0,1\nfffe,3\n3012,5a\nfef1,1\n3012,5b\n"),
            (I2cValues{{{0x6C, 1, 0x3012}, 0x5B}}));
}

TEST(WrittenI2cRegistersTest, OpeningServesAListWithoutOne) {
  EXPECT_EQ(I2c("3012,5a\n", I2cTarget{0x6C, 1, 0}), (I2cValues{{{0x6C, 1, 0x3012}, 0x5A}}));
  EXPECT_EQ(I2c("12345678,89abcdef\n", I2cTarget{0x6C, 5, 0}),
            (I2cValues{{{0x6C, 5, 0x12345678}, 0x89ABCDEF}}));
}

TEST(WrittenI2cRegistersTest, WidthMarkerWithoutASlaveIsARegister) {
  EXPECT_EQ(I2c("fff8,6c\nfffe,3\n3012,5a\nfffe,7\n"),
            (I2cValues{{{0x6C, 1, 0x3012}, 0x5A}, {{0x6C, 1, 0xFFFE}, 7}}));
  // With 8 bits, the low bits of the address are used.
  EXPECT_EQ(I2c("fff8,48\nfffe,1\n12,5a\nfffe,7\n"),
            (I2cValues{{{0x48, 0, 0x12}, 0x5A}, {{0x48, 0, 0xFE}, 7}}));
}

// A chip that processes lists register by register also writes the width code to the device: to
// 0xfe if register addresses have 8 bits.
TEST(WrittenI2cRegistersTest, RegisterThatAWidthCodeMayOverwriteIsUncertain) {
  const WrittenI2cRegisters written =
      WrittenByI2cList(EntriesOf("fff8,48\nfffe,1\nfe,5a\n10,1\nfff8,48\nfffe,1\n11,2\n"), {});
  EXPECT_EQ(written.values, (I2cValues{{{0x48, 0, 0x10}, 1}, {{0x48, 0, 0x11}, 2}}));
  EXPECT_EQ(written.uncertain,
            (std::map<I2cRegister, std::uint64_t>{{I2cRegister{0x48, 0, 0xFE}, 6}}));
  const WrittenI2cRegisters again =
      WrittenByI2cList(EntriesOf("fff8,48\nfffe,1\nfe,5a\nfff8,48\nfffe,1\nfe,5b\n"), {});
  EXPECT_EQ(again.values, (I2cValues{{{0x48, 0, 0xFE}, 0x5B}}));
  EXPECT_TRUE(again.uncertain.empty());
}

}  // namespace
}  // namespace borvanusb::tool_test
