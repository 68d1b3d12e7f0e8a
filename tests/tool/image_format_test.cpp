// Files in other formats are distinguished from raw firmware.
#include "images/image_format.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <string_view>

#include "flash/text_dump.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

std::optional<ImageFormat> FormatOf(std::string_view text) {
  return RecogniseFormat(BytesOf(text));
}

// Checksums are calculated by hand: the sum of a record's bytes is 0.
constexpr std::string_view kHexData = ":0400100001020304E2";   // 04+10+01+02+03+04 = 1e
constexpr std::string_view kHexUpper = ":020000040002F8";      // 02+04+02 = 08
constexpr std::string_view kHexSegment = ":020000021000EC";    // 02+02+10 = 14
constexpr std::string_view kHexStart = ":0400000508000131BD";  // 04+05+08+01+31 = 43
constexpr std::string_view kHexEnd = ":00000001FF";            // 01
// The sum is 0xff here.
constexpr std::string_view kSHeader =
    "S0060000484452"
    "1B";  // 06+48+44+52 = e4
constexpr std::string_view kSData1 =
    "S1051000AABB"
    "85";  // 05+10+aa+bb = 17a
constexpr std::string_view kSData2 =
    "S206010203AABB"
    "8E";  // 06+01+02+03+aa+bb = 171
constexpr std::string_view kSData3 =
    "S30708000000AABB"
    "8B";                                             // 07+08+aa+bb = 174
constexpr std::string_view kSEnd = "S70508000000F2";  // 05+08 = 0d
constexpr std::string_view kDump = "00001008h: 00 01 02 03 04 05 06 07;";

TEST(ImageFormatTest, IntelHexIsKnownByItsRecords) {
  for (const std::string_view line : {kHexData, kHexUpper, kHexSegment, kHexStart, kHexEnd}) {
    EXPECT_EQ(FormatOf(line), ImageFormat::kIntelHex) << line;
  }
  const std::string lines = std::string(kHexUpper) + "\r\n" + std::string(kHexData) + "\r\n";
  EXPECT_EQ(FormatOf(lines), ImageFormat::kIntelHex);
  EXPECT_EQ(FormatOf(":0400100001020304e2\n"), ImageFormat::kIntelHex);
  EXPECT_EQ(FormatOf("\xEF\xBB\xBF\n\n:00000001FF  \n"), ImageFormat::kIntelHex);
  EXPECT_EQ(FormatOf("; made by a tool\n# of some kind\n:00000001FF\r"), ImageFormat::kIntelHex);
  // A damaged first line does not make the file raw bytes.
  EXPECT_EQ(FormatOf(":0400100001020304E3\n" + lines), ImageFormat::kIntelHex);
}

TEST(ImageFormatTest, LongestIntelHexRecordsAreKnown) {
  // 255 bytes of 1: ff + ff = 1fe, the low byte of its complement is 2.
  std::string line = ":FF000000";
  for (int i = 0; i < 255; ++i) {
    line += "01";
  }
  EXPECT_EQ(FormatOf(line + "02\r\n"), ImageFormat::kIntelHex);
  EXPECT_EQ(FormatOf(line + "03\r\n"), std::nullopt);
}

TEST(ImageFormatTest, TextThatOnlyBeginsLikeIntelHexIsNone) {
  for (const std::string_view text :
       {":", ":0", ":00000001F", ":00000001FE", ":0000000100FF", ":0100000100FE", ":00000002FE",
        ":00000006FA", ":0400100001020304", ":zz", "x:00000001FF", ": 00000001FF", ":00000001FF;",
        ":05001000010203 4E1"}) {
    EXPECT_EQ(FormatOf(text), std::nullopt) << text;
  }
}

TEST(ImageFormatTest, SRecordIsKnownByItsRecords) {
  for (const std::string_view line :
       {kSHeader, kSData1, kSData2, kSData3, kSEnd, std::string_view("S9030000FC")}) {
    EXPECT_EQ(FormatOf(line), ImageFormat::kSRecord) << line;
  }
  EXPECT_EQ(FormatOf("S1051000aabb85\r\n"), ImageFormat::kSRecord);
}

TEST(ImageFormatTest, TextThatOnlyBeginsLikeAnSRecordIsNone) {
  // S4 is not a record. S1 has an address of two bytes, S3 one of four.
  for (const std::string_view text :
       {"S", "S1", "S100", "S1051000AABB84", "S1061000AABB84", "S4030000FC", "S10210ED",
        "S3041000AA41", "s1051000AABB85", "SA030000FC", "S9030000FC0"}) {
    EXPECT_EQ(FormatOf(text), std::nullopt) << text;
  }
}

TEST(ImageFormatTest, OurTextDumpsAreKnown) {
  EXPECT_EQ(FormatOf(kDump), ImageFormat::kTextDump);
  EXPECT_EQ(FormatOf(TextDump(0x20000, Pattern(100, 1))), ImageFormat::kTextDump);
  EXPECT_EQ(FormatOf(TextDump(0, Bytes(1, 0xAB))), ImageFormat::kTextDump);
  for (const std::string_view text :
       {"00001008h: 00 01 02 03 04 05 06 07", "00001008h: 00 01 02 03 04 05 06;",
        "0001008h: 00 01 02 03 04 05 06 07;", "00001008h: 00 01 02 03 04 05 06 0g;",
        "00001008 : 00 01 02 03 04 05 06 07;", "00001008h: 00 01 02 03 04 05 06 07; x"}) {
    EXPECT_EQ(FormatOf(text), std::nullopt) << text;
  }
}

Bytes ElfHeader(std::uint8_t word_size, std::uint8_t byte_order, std::uint8_t version) {
  Bytes bytes = {0x7F, 'E', 'L', 'F', word_size, byte_order, version};
  bytes.resize(52, 0);
  return bytes;
}

TEST(ImageFormatTest, ElfIsKnownByItsHeader) {
  EXPECT_EQ(RecogniseFormat(ElfHeader(1, 1, 1)), ImageFormat::kElf);
  EXPECT_EQ(RecogniseFormat(ElfHeader(2, 2, 1)), ImageFormat::kElf);
  EXPECT_EQ(RecogniseFormat(ElfHeader(3, 1, 1)), std::nullopt);
  EXPECT_EQ(RecogniseFormat(ElfHeader(1, 0, 1)), std::nullopt);
  EXPECT_EQ(RecogniseFormat(ElfHeader(1, 1, 0)), std::nullopt);
  EXPECT_EQ(FormatOf("\x7F"
                     "ELF"),
            std::nullopt);
}

Bytes Uf2Block() {
  Bytes bytes = {'U', 'F', '2', '\n', 0x57, 0x51, 0x5D, 0x9E};
  bytes.resize(508, 0);
  bytes.insert(bytes.end(), {0x30, 0x6F, 0xB1, 0x0A});
  return bytes;
}

TEST(ImageFormatTest, Uf2IsKnownByAllItsMarks) {
  EXPECT_EQ(RecogniseFormat(Uf2Block()), ImageFormat::kUf2);
  for (const std::size_t place : {0U, 4U, 511U}) {
    Bytes bytes = Uf2Block();
    bytes[place] ^= 1U;
    EXPECT_EQ(RecogniseFormat(bytes), std::nullopt) << place;
  }
  Bytes cut = Uf2Block();
  cut.pop_back();
  EXPECT_EQ(RecogniseFormat(cut), std::nullopt);
}

TEST(ImageFormatTest, FilesCutAnywhereAreReadWithinTheirBounds) {
  for (const Bytes& whole : {ElfHeader(1, 1, 1), Uf2Block(), BytesOf(kHexData), BytesOf(kSData3),
                             BytesOf(kDump), BytesOf("\xEF\xBB\xBF")}) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
      // A separate vector, so that memory checkers detect access beyond its end.
      const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_EQ(RecogniseFormat(part), std::nullopt) << size;
    }
  }
}

TEST(ImageFormatTest, RawFirmwareIsNone) {
  for (std::uint32_t seed = 0; seed < 2000; ++seed) {
    std::mt19937 random(seed);
    Bytes bytes(2000);
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(random());
    }
    bytes[0] = std::array<std::uint8_t, 4>{':', 'S', 0x7F, 'U'}.at(seed % 4);
    EXPECT_EQ(RecogniseFormat(bytes), std::nullopt) << seed;
  }
  EXPECT_EQ(RecogniseFormat(Bytes(0x10000, 0xFF)), std::nullopt);
  EXPECT_EQ(RecogniseFormat(Bytes(0x10000, '\n')), std::nullopt);
  EXPECT_EQ(RecogniseFormat(Bytes(0x10000, ':')), std::nullopt);
}

TEST(ImageFormatTest, RecordsInsideFirmwareAreItsOwn) {
  const std::string record = "\n" + std::string(kHexData) + "\n";
  const Bytes code = {0x20, 0x00, 0x01, 0x08, '\n'};
  EXPECT_EQ(FormatOf(std::string(code.begin(), code.end()) + record), std::nullopt);
  // Also text, but its record comes too late.
  EXPECT_EQ(FormatOf("1\n2\n3\n4\n5\n6\n7\n8\n" + std::string(kHexData) + "\n"), std::nullopt);
  EXPECT_EQ(FormatOf("1\n2\n3\n4\n5\n6\n7\n" + std::string(kHexData) + "\n"),
            ImageFormat::kIntelHex);
}

}  // namespace
}  // namespace borvanusb::tool_test
