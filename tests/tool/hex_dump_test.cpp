// Bytes as rows with text beside them.
#include "base/hex_dump.h"

#include <gtest/gtest.h>

#include <vector>

namespace borvanusb::tool_test {
namespace {

TEST(HexDumpTest, RowHasItsAddressTwoGroupsAndTheText) {
  const std::vector<std::uint8_t> bytes = {0x7F, 'E',  'L',  'F', 0x02, 0x01, 0x01, 0x00,
                                           ' ',  0x1B, 0x80, '~', 0x0A, 0x1F, 0xFF, '|'};
  EXPECT_EQ(HexDump(0x20800, bytes),
            "00020800  7f 45 4c 46 02 01 01 00  20 1b 80 7e 0a 1f ff 7c  |.ELF.... ..~...||\n");
}

TEST(HexDumpTest, RowsBeginAtMultiplesOfSixteen) {
  const std::vector<std::uint8_t> bytes = {'a', 'b', 'c'};
  EXPECT_EQ(HexDump(0x2F, bytes),
            "00000020                                                61  |               a|\n"
            "00000030  62 63                                             |bc              |\n");
}

TEST(HexDumpTest, EqualRowsAreOneStarButTheLastIsShown) {
  const std::vector<std::uint8_t> bytes(std::size_t{5} * 16, 0xFF);
  EXPECT_EQ(HexDump(0, bytes),
            "00000000  ff ff ff ff ff ff ff ff  ff ff ff ff ff ff ff ff  |................|\n"
            "*\n"
            "00000040  ff ff ff ff ff ff ff ff  ff ff ff ff ff ff ff ff  |................|\n");
}

TEST(HexDumpTest, LastAddressesOfAllAreShown) {
  const std::vector<std::uint8_t> bytes(16, 'x');
  EXPECT_EQ(HexDump(0xFFFFFFF0, bytes),
            "fffffff0  78 78 78 78 78 78 78 78  78 78 78 78 78 78 78 78  |xxxxxxxxxxxxxxxx|\n");
  EXPECT_EQ(HexDump(0, {}), "");
}

}  // namespace
}  // namespace borvanusb::tool_test
