// Reading and writing Motorola S-records. Checksums are calculated by hand: the sum of a record's
// bytes, including the length, is 0xff.
#include "images/srecord.h"
#include "images_support.h"

namespace borvanusb::tool_test {
namespace {

const std::string kEndRecord = "S9030000FC\n";  // 03

ImageContent ReadRecords(const std::string& text) {
  return ReadSRecord(BytesOf(text));
}

std::string ErrorInRecords(const std::string& text) {
  return ErrorOf([&] { ReadRecords(text); });
}

TEST(SRecordTest, AddressesOf16And24And32BitsAreRead) {
  // 05+10+aa+bb = 17a; 06+01+02+03+aa+bb = 171; 07+08+aa+bb = 174
  const ImageContent content = ReadRecords(
      "S0060000484452"
      "1B\nS1051000AABB"
      "85\nS206010203AABB"
      "8E\nS30708000000AABB"
      "8B\n" +
      kEndRecord);
  EXPECT_EQ(
      content.segments,
      (Segments{{0x1000, {0xAA, 0xBB}}, {0x10203, {0xAA, 0xBB}}, {0x08000000, {0xAA, 0xBB}}}));
  EXPECT_EQ(content.start, 0U);
}

TEST(SRecordTest, StartAddressesAreRead) {
  const std::string data = "S1051000AABB85\n";
  EXPECT_EQ(ReadRecords(data + "S9031234B6\n").start, 0x1234U);  // 03+12+34 = 49
  EXPECT_EQ(ReadRecords(data + "S804123456"
                               "5F\n")
                .start,
            0x123456U);                                                  // 04+12+34+56 = a0
  EXPECT_EQ(ReadRecords(data + "S70512345678E6\n").start, 0x12345678U);  // 05+12+34+56+78 = 119
}

TEST(SRecordTest, CountsAreChecked) {
  const std::string data = "S1051000AABB85\nS1051002AABB83\n";
  const std::string end = kEndRecord;
  EXPECT_EQ(ReadRecords(data + "S5030002FA\n" + end).segments.front().bytes.size(),
            4U);                                                              // 03+02 = 05
  EXPECT_EQ(ReadRecords(data + "S604000002F9\n" + end).segments.size(), 1U);  // 04+02 = 06
  EXPECT_EQ(ErrorInRecords(data + "S5030001FB\n" + end),
            "line 3: the file counts 1 data records, but has 2");
  EXPECT_EQ(ErrorInRecords(data + "S604010002F8\n" + end),
            "line 3: the file counts 65538 data records, but has 2");
  EXPECT_EQ(ErrorInRecords("S1051000AABB85\nS5030001FB\nS1051002AABB83\n" + end),
            "line 3: a data record follows the record count");
}

TEST(SRecordTest, ACountAtTheEndShowsThatTheFileIsWhole) {
  EXPECT_EQ(ReadRecords("S1051000AABB85\nS5030001FB\n").segments,
            (Segments{{0x1000, {0xAA, 0xBB}}}));
  EXPECT_EQ(ReadRecords("S1051000AABB85\nS5030001FB\n").start, std::nullopt);
  EXPECT_EQ(ErrorInRecords("S1051000AABB85\n"),
            "line 1: the file ends here without a start record (S7, S8, S9) or a count (S5, S6); "
            "it is incomplete");
}

TEST(SRecordTest, NothingFollowsTheStart) {
  EXPECT_EQ(ErrorInRecords("S1051000AABB85\n" + kEndRecord + "S1051002AABB83\n"),
            "line 3: the file continues after its start record");
  EXPECT_EQ(ReadRecords("S1051000AABB85\n" + kEndRecord + "\r\n \r\n").segments.size(), 1U);
  EXPECT_EQ(ErrorInRecords("S0030000FC\n" + kEndRecord), "it contains no bytes for the flash");
}

TEST(SRecordTest, BrokenRecordsAreNamedByTheirLine) {
  struct Case {
    std::string line;
    std::string error;
  };
  for (const Case& test : std::vector<Case>{
           {"S1051002AABB84", "line 2: the checksum is 0x84, but the calculated checksum is 0x83"},
           {"S1061002AABB82", "line 2: the record has 6 bytes; its length field 6 requires 7"},
           {"S1051002AABB8300", "line 2: the record has 7 bytes; its length field 5 requires 6"},
           {"S1", "line 2: the record is empty"},
           {"S10", "line 2: the record has an odd number of digits"},
           {"S1051002AAXB83", "line 2: the byte 0x58 in it is not a valid hexadecimal digit"},
           {"S4051002AABB83", "line 2: there are no records of type S4"},
           {"SA051002AABB83", "line 2: a record begins with S and a digit"},
           {"s1051002AABB83", "line 2: a record begins with S and a digit"},
           {":00000001FF", "line 2: a record begins with S and a digit"},
           {"S30410AABB86",
            "line 2: a record S3 has at least 6 bytes, not 5"},  // 04+10+aa+bb = 179
           {"S90400000 0FB", "line 2: the byte 0x20 in it is not a valid hexadecimal digit"},
           {"S904000000FB", "line 2: a record S9 has exactly 4 bytes, not 5"},
           {"S1051001AABB84", "line 2: duplicate bytes for 0x1001"},
       }) {
    EXPECT_EQ(ErrorInRecords("S1051000AABB85\n" + test.line + "\n" + kEndRecord), test.error)
        << test.line;
  }
}

TEST(SRecordTest, LastByteOf4GiBIsTakenAndTheNextRefused) {
  // 06+ff*4+01 = 403; 07+ff*4+01+02 = 406
  EXPECT_EQ(ReadRecords("S306FFFFFFFF01FC\n" + kEndRecord).segments, (Segments{{0xFFFFFFFF, {1}}}));
  EXPECT_EQ(ErrorInRecords("S307FFFFFFFF0102F9\n" + kEndRecord),
            "line 1: 2 bytes at 0xffffffff are beyond the last address 0xffffffff");
}

// ---- Written
// --------------------------------------------------------------------------------------

TEST(SRecordTest, EachFormHasItsRecords) {
  const Segments segments = {{0x1000, {0xAA, 0xBB}}};
  EXPECT_EQ(SRecordText(segments, SRecordForm::kS19),
            "S0030000FC\r\nS1051000AABB85\r\nS5030001FB\r\nS9030000FC\r\n");
  // 06+00+10+00+aa+bb = 17b; 04
  EXPECT_EQ(SRecordText(segments, SRecordForm::kS28),
            "S0030000FC\r\nS206001000AABB84\r\nS5030001FB\r\nS804000000FB\r\n");
  // 07+10+aa+bb = 17c; 05
  EXPECT_EQ(SRecordText(segments, SRecordForm::kS37),
            "S0030000FC\r\nS30700001000AABB83\r\nS5030001FB\r\nS70500000000FA\r\n");
}

TEST(SRecordTest, ShortestFormReachesToTheLastByte) {
  EXPECT_EQ(ShortestSRecordForm({{0xFFFF, {1}}}), SRecordForm::kS19);
  EXPECT_EQ(ShortestSRecordForm({{0xFFFF, {1, 2}}}), SRecordForm::kS28);
  EXPECT_EQ(ShortestSRecordForm({{0, {1}}, {0xFFFFFF, {1}}}), SRecordForm::kS28);
  EXPECT_EQ(ShortestSRecordForm({{0xFFFFFF, {1, 2}}}), SRecordForm::kS37);
  EXPECT_EQ(LastAddressOf(SRecordForm::kS19), 0xFFFFU);
  EXPECT_EQ(LastAddressOf(SRecordForm::kS28), 0xFFFFFFU);
  EXPECT_EQ(LastAddressOf(SRecordForm::kS37), 0xFFFFFFFFU);
}

TEST(SRecordTest, CountBeyond16BitsHas24) {
  const Segments segments = {{0, std::vector<std::uint8_t>(0x100000, 0x55)}};
  const std::string text = SRecordText(segments, SRecordForm::kS28);
  EXPECT_NE(text.find("S604010000FA\r\n"), std::string::npos);  // 04+01 = 05
  EXPECT_EQ(ReadRecords(text).segments, segments);
}

}  // namespace
}  // namespace borvanusb::tool_test
