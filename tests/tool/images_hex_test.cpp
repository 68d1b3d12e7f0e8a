// Reading and writing Intel HEX. Checksums are calculated by hand: the sum of a record's bytes is
// 0.
#include "images/intel_hex.h"
#include "images_support.h"

namespace borvanusb::tool_test {
namespace {

const std::string kEnd = ":00000001FF\n";

ImageContent Read(const std::string& text) {
  return ReadIntelHex(BytesOf(text));
}

std::string ErrorIn(const std::string& text) {
  return ErrorOf([&] { Read(text); });
}

TEST(IntelHexTest, DataIsReadAtItsAddress) {
  // 04+10+01+02+03+04 = 1e, and e2 makes 100.
  const ImageContent content = Read(":0400100001020304E2\r\n" + kEnd);
  EXPECT_EQ(content.segments, (Segments{{0x10, {1, 2, 3, 4}}}));
  EXPECT_EQ(content.start, std::nullopt);
}

TEST(IntelHexTest, EveryLineEndAndCaseIsTaken) {
  const Segments wanted = {{0x10, {0xAA, 0xBB}}};  // 02+10+aa+bb = 177
  for (const char* text :
       {":02001000AABB89\r\n:00000001FF\r\n", ":02001000aabb89\n:00000001ff",
        ":02001000aABb89\r:00000001FF\r", "\xEF\xBB\xBF:02001000AABB89\n:00000001FF\n",
        "\n\n:02001000AABB89  \n\t\n:00000001FF\t\n\n\n"}) {
    EXPECT_EQ(Read(text).segments, wanted) << text;
  }
}

TEST(IntelHexTest, RecordsInAnyOrderAreSortedAndJoined) {
  const std::string text =
      ":010005009961\n"     // 01+05+99 = 9f
      ":020001000102FA\n"   // 02+01+01+02 = 06
      ":010000000BF4\n"     // 01+0b = 0c
      ":020003000304F4\n";  // 02+03+03+04 = 0c
  EXPECT_EQ(Read(text + kEnd).segments, (Segments{{0, {0x0B, 1, 2, 3, 4, 0x99}}}));
}

TEST(IntelHexTest, LinearAddressGivesTheHighHalf) {
  // 02+04+12+34 = 4c; 01+ff+fe+55 = 253
  const ImageContent content = Read(":020000041234B4\n:01FFFE0055AD\n" + kEnd);
  EXPECT_EQ(content.segments, (Segments{{0x1234FFFE, {0x55}}}));
}

TEST(IntelHexTest, LinearRecordGoesOnBehind64KiB) {
  // 02+04+00+01 = 07; 04+ff+fe+01+02+03+04 = 20b
  const ImageContent content = Read(":020000040001F9\n:04FFFE0001020304F5\n" + kEnd);
  EXPECT_EQ(content.segments, (Segments{{0x1FFFE, {1, 2, 3, 4}}}));
}

TEST(IntelHexTest, SegmentRecordGoesAroundWithin64KiB) {
  // 02+02+10 = 14: the segment begins at 0x10000
  const ImageContent content = Read(":020000021000EC\n:04FFFE0001020304F5\n" + kEnd);
  EXPECT_EQ(content.segments, (Segments{{0x10000, {3, 4}}, {0x1FFFE, {1, 2}}}));
}

TEST(IntelHexTest, SegmentOfParagraphsIsAddedNotPutInFront) {
  // 02+02+12+34 = 4a: 0x12340; 01+00+05+66 = 6c
  EXPECT_EQ(Read(":020000021234B6\n:010005006694\n" + kEnd).segments,
            (Segments{{0x12345, {0x66}}}));
}

TEST(IntelHexTest, WithoutAnExtensionARecordGoesAround) {
  EXPECT_EQ(Read(":04FFFE0001020304F5\n" + kEnd).segments,
            (Segments{{0, {3, 4}}, {0xFFFE, {1, 2}}}));
}

TEST(IntelHexTest, LastExtensionCounts) {
  const std::string text =
      ":020000041234B4\n"  // linear 0x12340000
      ":020000021000EC\n"  // replaced by segment 0x10000
      ":010000000BF4\n" +
      kEnd;
  EXPECT_EQ(Read(text).segments, (Segments{{0x10000, {0x0B}}}));
}

TEST(IntelHexTest, LastByteOf4GiBIsTakenAndTheNextRefused) {
  // 02+04+ff+ff = 204; 01+ff+ff+77 = 276; 02+ff+ff+77+88 = 2ff
  EXPECT_EQ(Read(":02000004FFFFFC\n:01FFFF00778A\n" + kEnd).segments,
            (Segments{{0xFFFFFFFF, {0x77}}}));
  EXPECT_EQ(ErrorIn(":02000004FFFFFC\n:02FFFF00778801\n" + kEnd),
            "line 2: 2 bytes at 0xffffffff are beyond the last address 0xffffffff");
}

TEST(IntelHexTest, StartAddressesAreRead) {
  // 04+05+08+01+31 = 43; 04+03+12+34+00+05 = 52: 0x1234 * 16 + 5
  EXPECT_EQ(Read(":0400000508000131BD\n:010000000BF4\n" + kEnd).start, 0x08000131U);
  EXPECT_EQ(Read(":0400000312340005AE\n:010000000BF4\n" + kEnd).start, 0x12345U);
  EXPECT_EQ(ErrorIn(":0400000508000131BD\n:0400000508000131BD\n" + kEnd),
            "line 2: a second record names a start address");
}

TEST(IntelHexTest, GapOfGigabytesTakesNoMemory) {
  const Segments segments = Read(":010000000BF4\n:02000004FFFFFC\n:01FFFF00778A\n" + kEnd).segments;
  EXPECT_EQ(segments, (Segments{{0, {0x0B}}, {0xFFFFFFFF, {0x77}}}));
  EXPECT_EQ(TotalSize(segments), 2U);
}

TEST(IntelHexTest, BrokenRecordsAreNamedByTheirLine) {
  const std::string good = ":010000000BF4\n";
  struct Case {
    std::string line;
    std::string error;
  };
  for (const Case& test : std::vector<Case>{
           {":0400100001020304E3",
            "line 2: the checksum is 0xe3, but the calculated checksum is 0xe2"},
           {":04001000010203E2", "line 2: the record has 8 bytes; its length field 4 requires 9"},
           {":0400100001020304E200",
            "line 2: the record has 10 bytes; its length field 4 requires 9"},
           {":", "line 2: the record is empty"},
           {":000000", "line 2: the record has 3 bytes; its length field 0 requires 5"},
           {":00000001F", "line 2: the record has an odd number of digits"},
           {":0000000Z", "line 2: the byte 0x5a in it is not a valid hexadecimal digit"},
           {":00000006FA", "line 2: there are no records of type 0x06"},
           {":0100000100FE", "line 2: a record of type 0x01 has 0 bytes of data, not 1"},
           {":0100000410EB", "line 2: a record of type 0x04 has 2 bytes of data, not 1"},
           {":00000005FB", "line 2: a record of type 0x05 has 4 bytes of data, not 0"},
           {"; a remark", "line 2: a record begins with a colon"},
           {"S9030000FC", "line 2: a record begins with a colon"},
           {":010000000CF3", "line 2: duplicate bytes for 0x0"},
       }) {
    EXPECT_EQ(ErrorIn(good + test.line + "\n" + kEnd), test.error) << test.line;
  }
}

TEST(IntelHexTest, OverlapsAreFoundFromBothSides) {
  const std::string data = ":0400100001020304E2\n";
  // 04+0e+01+02+03+04 = 1c; 02+12+01+02 = 17; 01+13+01 = 15; 06+0f+01+02+03+04+05+06 = 2a
  EXPECT_EQ(ErrorIn(data + ":04000E0001020304E4\n" + kEnd),
            "line 2: duplicate bytes for 0x10-0x11");
  EXPECT_EQ(ErrorIn(data + ":020012000102E9\n" + kEnd), "line 2: duplicate bytes for 0x12-0x13");
  EXPECT_EQ(ErrorIn(data + ":0100130001EB\n" + kEnd), "line 2: duplicate bytes for 0x13");
  EXPECT_EQ(ErrorIn(data + ":06000F00010203040506D6\n" + kEnd),
            "line 2: duplicate bytes for 0x10-0x13");
  // Adjacent addresses are allowed: 01+14+01 = 16, 01+0f+01 = 11.
  EXPECT_EQ(Read(data + ":0100140001EA\n:01000F0001EF\n" + kEnd).segments,
            (Segments{{0x0F, {1, 1, 2, 3, 4, 1}}}));
}

TEST(IntelHexTest, EndMustBeThereAndBeTheEnd) {
  EXPECT_EQ(ErrorIn(":010000000BF4\n"),
            "line 1: the file ends here without an end record (:00000001FF); it is incomplete");
  EXPECT_EQ(ErrorIn(":010000000BF4\n" + kEnd + "\n:010001000BF3\n"),
            "line 4: the file continues after its end record");
  EXPECT_EQ(ErrorIn(":010000000BF4\n" + kEnd + "\x1A"),
            "line 3: the file continues after its end record");
  EXPECT_EQ(ErrorIn(kEnd), "it contains no bytes for the flash");
}

TEST(IntelHexTest, MorePiecesThanTheLimitAreRefused) {
  Segments segments;
  for (std::uint32_t i = 0; i < kMostSegments; ++i) {
    segments.push_back({i * 0x100, {1}});
  }
  EXPECT_EQ(Read(IntelHexText(segments)).segments, segments);
  segments.push_back({0xFFFFFFFF, {1}});
  EXPECT_EQ(ErrorIn(IntelHexText(segments)), "it has more than 4096 separate segments");
}

// ---- Written
// --------------------------------------------------------------------------------------

TEST(IntelHexTest, RecordsAreWrittenWith16Bytes) {
  const Segments segments = {{0x10, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}}};
  // 10+10+(0+...+15 = 78) = 98; 01+20+10 = 31
  EXPECT_EQ(IntelHexText(segments),
            ":10001000000102030405060708090A0B0C0D0E0F68\r\n"
            ":0100200010CF\r\n"
            ":00000001FF\r\n");
}

TEST(IntelHexTest, RecordsEndAt64KiBAndTheHighHalfIsWrittenAnew) {
  // 02+ff+fe+01+02 = 202; 02+04+00+01 = 07; 02+03+04 = 09; 02+04+80+00 = 86; 01+05 = 06
  EXPECT_EQ(IntelHexText({{0xFFFE, {1, 2, 3, 4}}, {0x80000000, {5}}}),
            ":02FFFE000102FE\r\n"
            ":020000040001F9\r\n"
            ":020000000304F7\r\n"
            ":0200000480007A\r\n"
            ":0100000005FA\r\n"
            ":00000001FF\r\n");
}

}  // namespace
}  // namespace borvanusb::tool_test
