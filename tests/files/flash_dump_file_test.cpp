// Flash dumps: which form a name chooses, and what stands in the file.

#include "files/flash_dump_file.h"

#include <gtest/gtest.h>

#include <numeric>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Bytes = std::vector<std::uint8_t>;

class FlashDumpFileTest : public testing::Test {
 protected:
  // What a read job of these bytes leaves in the file `name`.
  std::string Dump(const std::string& name, const Bytes& bytes, const std::string& start,
                   const std::string& end) {
    device->flash_read = [&](Bytes& output, auto&&...) {
      output = bytes;
      return 0;
    };
    ReportRecorder recorder(device);
    EXPECT_EQ(
        borvan::StartFlashQuickReadJob(device, folder.Path(name), start, end, recorder.Callback()),
        0);
    EXPECT_TRUE(recorder.JobsEnded());
    EXPECT_EQ(recorder.Reports().size(), 1U);
    return folder.Content(name);
  }

  static Bytes Counting(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
  }

 public:
  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
};

TEST_F(FlashDumpFileTest, ExtensionTxtInSmallLettersChoosesText) {
  for (const char* name : {"a.txt", "a.bin.txt", ".txt", "txt", "folder.bin/a.txt",
                           "C:\\folder.d\\dump.1.txt", "folder/.txt"}) {
    EXPECT_TRUE(borvan::IsTextFileName(name)) << name;
  }
  for (const char* name : {"a.TXT", "a.Txt", "a.txT", "a.bin", "a", "atxt", "a.", "", ".", "a.txt.",
                           "a.txt.bin", "a.txt ", "a.txtx", "a.tx", "folder/txt", "folder.txt/a",
                           "folder.txt\\a", "folder.d\\txt"}) {
    EXPECT_FALSE(borvan::IsTextFileName(name)) << name;
  }
}

TEST_F(FlashDumpFileTest, ExtensionIsWhatFollowsTheLastDotWhereverThatStands) {
  EXPECT_EQ(borvan::FileExtension("dump."), "");
  EXPECT_EQ(borvan::FileExtension("dump"), "dump");
  EXPECT_EQ(borvan::FileExtension("folder.txt\\dump"), "txt\\dump");
}

TEST_F(FlashDumpFileTest, BinaryDumpIsTheBytes) {
  const Bytes bytes = {0x00, 0x0A, 0x0D, 0x0D, 0x0A, 0x1A, 0xFF};
  const std::string expected("\x00\x0A\x0D\x0D\x0A\x1A\xFF", 7);
  for (const char* name : {"dump.bin", "dump.TXT", "dump", "dump."}) {
    EXPECT_EQ(Dump(name, bytes, "0", "6"), expected) << name;
  }
}

TEST_F(FlashDumpFileTest, BinaryDumpHoldsAllBytesWhateverTheEndAddress) {
  EXPECT_EQ(Dump("dump.bin", Counting(100), "1000", "0").size(), 100U);
}

TEST_F(FlashDumpFileTest, TextDumpShowsEightBytesALine) {
  const Bytes bytes = {0xDE, 0xAD, 0xBE, 0xEF, 0x00, 0x01, 0x7F, 0x80,
                       0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07};
  EXPECT_EQ(Dump("dump.txt", bytes, "1000", "100f"),
            "00001000h: de ad be ef 00 01 7f 80;\r\n"
            "00001008h: 00 01 02 03 04 05 06 07;\r\n");
}

TEST_F(FlashDumpFileTest, TextDumpFillsTheLastLineWithZeroBytes) {
  EXPECT_EQ(Dump("dump.txt", {0xA1, 0xA2, 0xA3}, "20", "22"),
            "00000020h: a1 a2 a3 00 00 00 00 00;\r\n");
  EXPECT_EQ(Dump("dump.txt", Bytes(9, 0xFF), "0", "8"),
            "00000000h: ff ff ff ff ff ff ff ff;\r\n"
            "00000008h: ff 00 00 00 00 00 00 00;\r\n");
}

TEST_F(FlashDumpFileTest, TextDumpOfNothingIsEmpty) {
  EXPECT_EQ(Dump("dump.txt", {}, "0", "ff"), "");
}

TEST_F(FlashDumpFileTest, LinesEndWhereTheOffsetExceedsTheEndAddress) {
  const std::string first = "00000000h: 00 01 02 03 04 05 06 07;\r\n";
  const std::string second = "00000008h: 08 09 0a 0b 0c 0d 0e 0f;\r\n";
  EXPECT_EQ(Dump("dump.txt", Counting(24), "0", "8"), first + second);
  EXPECT_EQ(Dump("dump.txt", Counting(24), "0", "f"), first + second);
  EXPECT_EQ(Dump("dump.txt", Counting(9), "0", "7"), first);
}

TEST_F(FlashDumpFileTest, FirstLineIsAlwaysWritten) {
  EXPECT_EQ(Dump("dump.txt", Counting(24), "0", "0"), "00000000h: 00 01 02 03 04 05 06 07;\r\n");
}

TEST_F(FlashDumpFileTest, EndAddressIsComparedWithTheOffsetNotWithTheAddress) {
  EXPECT_EQ(Dump("dump.txt", Counting(24), "8", "8"),
            "00000008h: 00 01 02 03 04 05 06 07;\r\n"
            "00000010h: 08 09 0a 0b 0c 0d 0e 0f;\r\n");
}

TEST_F(FlashDumpFileTest, AddressesWrapAt32Bits) {
  EXPECT_EQ(Dump("dump.txt", Counting(16), "fffffff8", "ffffffff"),
            "fffffff8h: 00 01 02 03 04 05 06 07;\r\n"
            "00000000h: 08 09 0a 0b 0c 0d 0e 0f;\r\n");
}

TEST_F(FlashDumpFileTest, LongTextDumpHasEveryLineOnce) {
  constexpr std::size_t kLines = 20001;
  constexpr std::size_t kLineLength = 37;
  const std::string text = Dump("dump.txt", Counting(kLines * 8), "0", "ffffffff");
  ASSERT_EQ(text.size(), kLines * kLineLength);
  const auto line = [&](std::size_t index) {
    return text.substr(index * kLineLength, kLineLength);
  };
  EXPECT_EQ(line(8191), "0000fff8h: f8 f9 fa fb fc fd fe ff;\r\n");
  EXPECT_EQ(line(8192), "00010000h: 00 01 02 03 04 05 06 07;\r\n");
  EXPECT_EQ(line(16384), "00020000h: 00 01 02 03 04 05 06 07;\r\n");
  EXPECT_EQ(line(20000), "00027100h: 00 01 02 03 04 05 06 07;\r\n");
}

TEST_F(FlashDumpFileTest, ShorterDumpReplacesALongerFile) {
  folder.Put("dump.bin", std::string(1000, 'x'));
  EXPECT_EQ(Dump("dump.bin", {1, 2}, "0", "1"), "\x01\x02");
}

TEST_F(FlashDumpFileTest, OneLineAlone) {
  std::array<char, borvan::kDumpLineLength> line;
  line.fill('?');
  borvan::FormatDumpLine(0xFEDCBA98, Bytes{0xAB, 0xCD, 0xEF, 0x0A, 0xA0, 0x09, 0x90}, line);
  EXPECT_EQ(std::string(line.data(), line.size()), "fedcba98h: ab cd ef 0a a0 09 90 00;\r\n");
}

TEST_F(FlashDumpFileTest, LineCounts) {
  struct CountCase {
    std::uint64_t bytes;
    std::uint32_t end;
    std::uint32_t lines;
  };
  constexpr std::uint32_t kFarEnd = 0xFFFFFFFF;
  constexpr CountCase kCases[] = {
      // One for each eight bytes begun.
      {0, kFarEnd, 0},
      {1, kFarEnd, 1},
      {8, kFarEnd, 1},
      {9, kFarEnd, 2},
      {64, kFarEnd, 8},
      {0x100000000, kFarEnd, 0x20000000},
      // None of an empty dump; else the first always.
      {0, 0, 0},
      {0, 64, 0},
      {100, 0, 1},
      // They stop at the first offset above the end.
      {9, 7, 1},
      {9, 8, 2},
      {100, 15, 2},
      {100, 16, 3},
      {100, 17, 3},
  };
  for (const CountCase& each : kCases) {
    EXPECT_EQ(borvan::DumpLineCount(each.bytes, each.end), each.lines)
        << each.bytes << " up to " << each.end;
  }
}

}  // namespace
}  // namespace borvan_test
