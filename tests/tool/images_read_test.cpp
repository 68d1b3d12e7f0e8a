// The format in which a file is read, and segments.
#include "images/read_image.h"
#include "images_support.h"

namespace borvanusb::tool_test {
namespace {

constexpr std::string_view kHex = ":0400100001020304E2\r\n:00000001FF\r\n";

std::optional<ImageForm> Form(const std::string& name, std::string_view content,
                              ImageForm wished = ImageForm::kAuto) {
  return FormOf(name, BytesOf(content), wished);
}

TEST(ReadImageTest, ContentTellsTheFormThenTheName) {
  EXPECT_EQ(Form("fw.bin", kHex), ImageForm::kIntelHex);
  EXPECT_EQ(Form("fw", "S1051000AABB85\nS9030000FC\n"), ImageForm::kSRecord);
  EXPECT_EQ(Form("fw.bin", std::string("\x7F") + "ELF\1\1\1" + std::string(45, '\0')),
            ImageForm::kElf);
  EXPECT_EQ(Form("fw.bin", "firmware"), ImageForm::kRaw);
  // With this name, a file whose first lines are all damaged is not treated as raw bytes.
  EXPECT_EQ(Form("fw.hex", "firmware"), ImageForm::kIntelHex);
  EXPECT_EQ(Form("fw.S19", "firmware"), ImageForm::kSRecord);
  EXPECT_EQ(Form("fw.elf", "firmware"), ImageForm::kElf);
  EXPECT_EQ(Form("fw.txt", "00001008h: 00 01 02 03 04 05 06 07;\r\n"), std::nullopt);
}

TEST(ReadImageTest, WishCountsMore) {
  EXPECT_EQ(Form("fw.hex", kHex, ImageForm::kRaw), ImageForm::kRaw);
  EXPECT_EQ(Form("fw.bin", "firmware", ImageForm::kSRecord), ImageForm::kSRecord);
}

TEST(ReadImageTest, EndOfANameIsWhatFollowsItsLastPoint) {
  for (const char* name : {"a.hex", "a.IHEX", "a.ihx", "dir.bin/a.b.Hex", "C:\\x\\.hex"}) {
    EXPECT_EQ(FormOfName(name), ImageForm::kIntelHex) << name;
  }
  for (const char* name : {"a.srec", "a.mot", "a.s19", "a.s28", "a.s37", "a.S3"}) {
    EXPECT_EQ(FormOfName(name), ImageForm::kSRecord) << name;
  }
  EXPECT_EQ(FormOfName("a.elf"), ImageForm::kElf);
  for (const char* name : {"", "hex", "a.hex.bin", "a.hex/b", "a.hex\\b", "a.", "a.s4"}) {
    EXPECT_EQ(FormOfName(name), std::nullopt) << name;
  }
}

TEST(ReadImageTest, EachFormIsRead) {
  const Segments wanted = {{0x10, {1, 2, 3, 4}}};
  EXPECT_EQ(ReadImage(BytesOf(kHex), ImageForm::kIntelHex).segments, wanted);
  // 07+10+01+02+03+04 = 21
  EXPECT_EQ(ReadImage(BytesOf("S107001001020304DE\nS9030000FC\n"), ImageForm::kSRecord).segments,
            wanted);
  EXPECT_EQ(ReadImage(BytesOf("abc"), ImageForm::kRaw).segments, (Segments{{0, {'a', 'b', 'c'}}}));
}

TEST(SegmentsTest, ShiftedBytesStayBelow4GiB) {
  const Segments segments = {{0x10, {1}}, {0x100, {2, 3}}};
  EXPECT_EQ(Shifted(segments, 0x1000), (Segments{{0x1010, {1}}, {0x1100, {2, 3}}}));
  EXPECT_EQ(Shifted(segments, 0xFFFFFEFE).back().Place(), (Range{0xFFFFFFFE, 0xFFFFFFFF}));
  EXPECT_EQ(
      ErrorOf([&] { Shifted(segments, 0xFFFFFEFF); }),
      "its bytes at 0x100-0x101, moved by 0xfffffeff, are beyond the last address 0xffffffff");
}

TEST(SegmentsTest, PlacesAndSizesLeaveGapsOut) {
  const Segments segments = {{0x10, {1}}, {0xFFFFFFFE, {2, 3}}};
  EXPECT_EQ(TotalSize(segments), 3U);
  EXPECT_EQ(PlacesOf(segments), (std::vector<Range>{{0x10, 0x10}, {0xFFFFFFFE, 0xFFFFFFFF}}));
}

}  // namespace
}  // namespace borvanusb::tool_test
