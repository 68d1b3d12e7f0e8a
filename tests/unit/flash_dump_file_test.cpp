// Dump files: which form, which lines, which bytes.

#include "files/flash_dump_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "temporary_file.h"

namespace borvan {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::string Line(std::uint32_t address, const Bytes& bytes) {
  std::array<char, kDumpLineLength> line;
  line.fill('?');
  FormatDumpLine(address, bytes, line);
  return {line.begin(), line.end()};
}

TEST(DumpLine, AddressColonEightBytesSemicolonCrLf) {
  EXPECT_EQ(Line(0x1008, {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}),
            "00001008h: 00 01 02 03 04 05 06 07;\r\n");
}

TEST(DumpLine, DigitsAreLowerCase) {
  EXPECT_EQ(Line(0xFEDCBA98, {0xAB, 0xCD, 0xEF, 0xFF, 0x0A, 0xA0, 0x09, 0x90}),
            "fedcba98h: ab cd ef ff 0a a0 09 90;\r\n");
}

TEST(DumpLine, MissingBytesShow00) {
  EXPECT_EQ(Line(0, {0xAB}), "00000000h: ab 00 00 00 00 00 00 00;\r\n");
  EXPECT_EQ(Line(0, {1, 2, 3, 4, 5, 6, 7}), "00000000h: 01 02 03 04 05 06 07 00;\r\n");
}

TEST(DumpLineCount, OneLineForEightBytesBegun) {
  constexpr std::uint32_t kFarEnd = 0xFFFFFFFF;
  EXPECT_EQ(DumpLineCount(0, kFarEnd), 0U);
  EXPECT_EQ(DumpLineCount(1, kFarEnd), 1U);
  EXPECT_EQ(DumpLineCount(8, kFarEnd), 1U);
  EXPECT_EQ(DumpLineCount(9, kFarEnd), 2U);
  EXPECT_EQ(DumpLineCount(64, kFarEnd), 8U);
  EXPECT_EQ(DumpLineCount(0x100000000, kFarEnd), 0x20000000U);
}

TEST(DumpLineCount, AnEmptyDumpHasNoLineWhateverItsEnd) {
  EXPECT_EQ(DumpLineCount(0, 0), 0U);
  EXPECT_EQ(DumpLineCount(0, 64), 0U);
}

TEST(DumpLineCount, TheFirstLineIsAlwaysThere) {
  EXPECT_EQ(DumpLineCount(100, 0), 1U);
}

TEST(DumpLineCount, LinesStopAtTheFirstOffsetAboveTheEndNumber) {
  EXPECT_EQ(DumpLineCount(9, 7), 1U);     // offset 8 is above 7
  EXPECT_EQ(DumpLineCount(9, 8), 2U);     // offset 8 is not above 8
  EXPECT_EQ(DumpLineCount(100, 15), 2U);  // offsets 0, 8
  EXPECT_EQ(DumpLineCount(100, 16), 3U);  // offsets 0, 8, 16
  EXPECT_EQ(DumpLineCount(100, 17), 3U);
}

std::string TextDump(const Bytes& bytes, std::uint32_t start, std::uint32_t end) {
  const test::TemporaryFile file(".txt");
  {
    auto output = File::OpenToWrite(file.Path());
    if (!output.has_value()) {
      return "the file can't be created";
    }
    WriteTextDump(*output, bytes, start, end);
  }
  return file.Content();
}

TEST(TextDump, ShowsARangeFromItsStartAddressOn) {
  EXPECT_EQ(TextDump({0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x99}, 0x1000, 0x1009),
            "00001000h: 00 11 22 33 44 55 66 77;\r\n"
            "00001008h: 88 99 00 00 00 00 00 00;\r\n");
}

TEST(TextDump, OfNothingIsEmpty) {
  EXPECT_EQ(TextDump({}, 0x1000, 0x1009), "");
}

TEST(TextDump, AddressesWrapAt32Bits) {
  EXPECT_EQ(TextDump(Bytes(16, 0xAA), 0xFFFFFFF8, 0xFFFFFFFF),
            "fffffff8h: aa aa aa aa aa aa aa aa;\r\n"
            "00000000h: aa aa aa aa aa aa aa aa;\r\n");
}

TEST(TextDump, EndNumberIsComparedWithTheOffsetNotTheAddress) {
  // Offset 8 is not above 0x1000, though the address 0x2008 is.
  EXPECT_EQ(TextDump(Bytes(16, 0x01), 0x2000, 0x1000),
            "00002000h: 01 01 01 01 01 01 01 01;\r\n"
            "00002008h: 01 01 01 01 01 01 01 01;\r\n");
  // Offset 8 is above 7.
  EXPECT_EQ(TextDump(Bytes(16, 0x01), 0, 7), "00000000h: 01 01 01 01 01 01 01 01;\r\n");
}

TEST(TextDump, LinesPastTheFirstWriteGoOnWithoutAGap) {
  // More than any one write holds: each line's address is its number times 8.
  constexpr std::size_t kLines = 20000;
  const std::string text = TextDump(Bytes(kLines * 8, 0x5A), 0, 0xFFFFFFFF);
  ASSERT_EQ(text.size(), kLines * 37);
  char expected[40];
  for (const std::size_t line : {std::size_t{0}, std::size_t{8191}, std::size_t{8192},
                                 std::size_t{16383}, std::size_t{16384}, kLines - 1}) {
    std::snprintf(expected, sizeof expected, "%08xh: 5a 5a 5a 5a 5a 5a 5a 5a;\r\n",
                  static_cast<unsigned>(line * 8));
    EXPECT_EQ(text.substr(line * 37, 37), expected);
  }
}

TEST(BinaryDump, IsTheBytesAsTheyAre) {
  const test::TemporaryFile file(".bin");
  {
    auto output = File::OpenToWrite(file.Path());
    ASSERT_TRUE(output.has_value());
    WriteBinaryDump(*output, Bytes{0x0A, 0x0D, 0x0D, 0x0A, 0x1A, 0x00, 0xFF});
  }
  EXPECT_EQ(file.Content(), std::string("\n\r\r\n\x1A\0\xFF", 7));
}

TEST(DumpForm, TxtInSmallLettersIsText) {
  EXPECT_TRUE(IsTextFileName("dump.txt"));
  EXPECT_TRUE(IsTextFileName("C:\\folder.d\\dump.1.txt"));
  EXPECT_TRUE(IsTextFileName("folder/.txt"));
}

TEST(DumpForm, AnythingElseIsBinary) {
  EXPECT_FALSE(IsTextFileName("dump.TXT"));
  EXPECT_FALSE(IsTextFileName("dump.Txt"));
  EXPECT_FALSE(IsTextFileName("dump.bin"));
  EXPECT_FALSE(IsTextFileName("dump.txt "));
  EXPECT_FALSE(IsTextFileName("dump.txt.bak"));
  EXPECT_FALSE(IsTextFileName("dumptxt"));
  EXPECT_FALSE(IsTextFileName("dump"));
}

TEST(DumpForm, ATrailingDotIsAnEmptyExtension) {
  EXPECT_EQ(FileExtension("dump."), "");
  EXPECT_FALSE(IsTextFileName("dump."));
  EXPECT_FALSE(IsTextFileName("dump.txt."));
}

TEST(DumpForm, APathWithoutADotIsItselfTheExtension) {
  EXPECT_EQ(FileExtension("dump"), "dump");
  EXPECT_TRUE(IsTextFileName("txt"));
  EXPECT_FALSE(IsTextFileName(""));
}

TEST(DumpForm, TheLastDotMayStandInAFolderName) {
  EXPECT_EQ(FileExtension("folder.txt\\dump"), "txt\\dump");
  EXPECT_FALSE(IsTextFileName("folder.txt\\dump"));
  EXPECT_FALSE(IsTextFileName("folder.d\\txt"));
}

}  // namespace
}  // namespace borvan
