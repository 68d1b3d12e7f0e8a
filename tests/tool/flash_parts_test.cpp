// The helper functions of the flash commands.
#include <gtest/gtest.h>

#include "base/files.h"
#include "base/hex_bytes.h"
#include "base/time_text.h"
#include "command/command_line.h"
#include "command/several_cameras.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_words.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/transfer_count.h"
#include "flash/engine/work_state.h"
#include "flash/program.h"
#include "flash/program_names.h"
#include "flash/report.h"
#include "flash/text_dump.h"
#include "flash_support.h"

namespace borvanusb {

// For the failure messages of the tests.
void PrintTo(const Range& range, std::ostream* stream) {
  *stream << Text(range);
}

}  // namespace borvanusb

namespace borvanusb::tool_test {
namespace {

TEST(ByteRangesTest, NeighbouringDifferencesAreOneRange) {
  EXPECT_EQ(DifferingBytes(0x100, Bytes{1, 2, 3, 4, 5}, Bytes{1, 9, 9, 4, 9}),
            (Ranges{{0x101, 0x102}, {0x104, 0x104}}));
  EXPECT_EQ(DifferingBytes(0x100, Bytes{1}, Bytes{1}), Ranges{});
}

TEST(ByteRangesTest, OneByteMakesItsSectorDiffer) {
  const Bytes left(std::size_t{4} * 4096, 0);
  Bytes right = left;
  right[4096] = 1;
  right[3 * 4096 - 1] = 1;
  EXPECT_EQ(DifferingSectors(0x8000, left, right), (Ranges{{0x9000, 0xAFFF}}));
}

TEST(ByteRangesTest, WithoutLeavesWhatIsBesideTheHoles) {
  EXPECT_EQ(Without({{0, 99}}, {{10, 19}, {90, 200}}), (Ranges{{0, 9}, {20, 89}}));
  EXPECT_EQ(Without({{0, 99}}, {{0, 99}}), Ranges{});
  EXPECT_EQ(Without({{0, 9}, {20, 29}}, {{5, 24}}), (Ranges{{0, 4}, {25, 29}}));
  EXPECT_EQ(Without({{0xFFFFF000, 0xFFFFFFFF}}, {{0xFFFFFF00, 0xFFFFFFFF}}),
            (Ranges{{0xFFFFF000, 0xFFFFFEFF}}));
}

TEST(ByteRangesTest, UnionJoinsWhatTouches) {
  EXPECT_EQ(Union({{10, 19}, {40, 49}}, {{0, 9}, {30, 30}}), (Ranges{{0, 19}, {30, 30}, {40, 49}}));
}

TEST(ByteRangesTest, LongListsAreShortenedForPeople) {
  EXPECT_EQ(RangesText({{0, 1}, {4, 4}, {6, 7}, {9, 9}, {11, 12}, {14, 15}}),
            "0x0-0x1, 0x4, 0x6-0x7, 0x9 and 2 more");
}

TEST(SectorPlanTest, HalfUsedSectorsAreThoseThatAnImageFillsInPart) {
  using Sectors = std::vector<std::uint32_t>;
  EXPECT_EQ(HalfUsedSectors(0x1000, 0x2000), Sectors{});
  EXPECT_EQ(HalfUsedSectors(0x1001, 0x1FFF), Sectors{0x1000});
  EXPECT_EQ(HalfUsedSectors(0x1000, 0x1FFF), Sectors{0x2000});
  EXPECT_EQ(HalfUsedSectors(0x1F00, 0x1200), (Sectors{0x1000, 0x3000}));
  EXPECT_EQ(HalfUsedSectors(0x1F00, 0x10), Sectors{0x1000});
  EXPECT_EQ(HalfUsedSectors(0xFFFFFF00, 0x100), Sectors{0xFFFFF000});
}

TEST(SectorPlanTest, SectorsAroundReachToTheLastAddress) {
  EXPECT_EQ(SectorsAround(0xFFFFFF00, 0x100).Whole(), (Range{0xFFFFF000, 0xFFFFFFFF}));
  EXPECT_EQ(SectorsAround(0x1FFF, 2).Whole(), (Range{0x1000, 0x2FFF}));
}

TEST(SectorPlanTest, BlocksHoldAtMostThirtySectors) {
  EXPECT_EQ(CutIntoBlocks({{0x1000, 0x1FFF}, {0x10000, 0x10000 + 61 * 4096 - 1}}),
            (Ranges{{0x1000, 0x1FFF}, {0x10000, 0x2DFFF}, {0x2E000, 0x4BFFF}, {0x4C000, 0x4CFFF}}));
}

TEST(SectorPlanTest, WholePacketsReachIntoTheLastSectorOfAnyBlock) {
  for (std::size_t sectors = 1; sectors <= 30; ++sectors) {
    const Bytes block(sectors * 4096, 0x11);
    const BlockParts parts = SplitBlock(block);
    EXPECT_EQ(parts.packets.size() % 60, 0U) << sectors;
    EXPECT_GT(parts.packets.size(), (sectors - 1) * 4096) << sectors;
    EXPECT_EQ(parts.tail.size() % 4, 0U) << sectors;
    EXPECT_LT(parts.tail.size(), 60U) << sectors;
    EXPECT_EQ(parts.packets.size() + parts.tail.size(), block.size()) << sectors;
  }
}

TEST(TailWordsTest, ErasedWordsAreLeftOut) {
  const auto words =
      TailWords(0x40, Bytes{1, 2, 3, 4, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0xFF});
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[0].address, 0x40U);
  EXPECT_EQ(words[0].value, 0x01020304U);
  EXPECT_EQ(words[1].address, 0x48U);
  EXPECT_EQ(words[1].value, 0xFFFF00FFU);
}

TEST(TransferCountTest, BulkReadIsTwoReadingsOfTwoTransfersAPacket) {
  // 4 bytes: two jobs with two length queries and a packet each.
  EXPECT_EQ(ReadTransfers(4), 2U * (2U + 2U));
  // Two packets. First two length queries, both packets and a word for the last byte. Then a job
  // for a packet in the middle, and one for the last packet with its word.
  EXPECT_EQ(ReadTransfers(128), 2U + 4U + 3U + (2U + 4U) + (2U + 2U + 3U));
  // Before the flash's start there is nothing, so the first half packet needs a separate job.
  EXPECT_EQ(ReadTransfers(128, 0), 2U + 4U + 3U + (2U + 2U) + (2U + 2U) + (2U + 2U + 3U));
  // A part of 128 KiB takes 2049 packets, twice. The last part is as above: with 2048 packets it
  // takes 2 + 4096 + 3, then 2 + 4096 and 2 + 2 + 3.
  EXPECT_EQ(ReadTransfers(131072 + 4), 2U * (2U + 4098U) + 2U * (2U + 2U));
  EXPECT_EQ(ReadTransfers(262144), 2U * (2U + 4098U) + 4101U + 4098U + 7U);
}

TEST(TransferCountTest, RunOfRegistersIsReadTwice) {
  EXPECT_EQ(RunTransfers({0x100, 0x137}), 2U * (1U + 2U));
  // 16 blocks; then half a block, 14 and a half, and the last block.
  EXPECT_EQ(RunTransfers({0x100, 0x47F}), 1U + 32U + (1U + 2U) + (1U + 30U) + (1U + 2U));
}

TEST(TransferCountTest, ProgrammingErasesSectorsAndLeavesBlankPacketsOut) {
  // 262144 bytes: 64 sectors, 4370 packets, two length queries.
  EXPECT_EQ(ProgramTransfers(Bytes(262144, 0x5A)), 2U + 64U + 4370U);
  EXPECT_EQ(ProgramTransfers(Bytes(120, 0xFF)), 2U + 1U);
  // The last packet has only one byte and is padded with zeros, so it is sent.
  EXPECT_EQ(ProgramTransfers(Bytes(61, 0xFF)), 2U + 1U + 1U);
}

TEST(TransferCountTest, BlockOfOneSectorWritesItsLastBytesAsWords) {
  // Two length queries, an erase, 68 packets. The remaining 16 bytes are 4 words with two transfers
  // each.
  EXPECT_EQ(BlockTransfers(Bytes(4096, 0x5A)), 2U + 1U + 68U + 8U);
  // 30 sectors are exactly 2048 packets.
  EXPECT_EQ(BlockTransfers(Bytes(std::size_t{30} * 4096, 0x5A)), 2U + 30U + 2048U);
}

TEST(TextDumpTest, LinesHoldEightBytesAndTheLastOneZerosForMissingOnes) {
  EXPECT_EQ(TextDump(0x1008, Bytes{0, 1, 2, 3, 4, 5, 6, 7, 0xAB}),
            "00001008h: 00 01 02 03 04 05 06 07;\r\n"
            "00001010h: ab 00 00 00 00 00 00 00;\r\n");
  EXPECT_EQ(TextDump(0x1008, Bytes{}), "");
}

TEST(HexBytesTest, TextsThatAreNoBytesAreRefused) {
  EXPECT_EQ(HexBytes(Bytes{0, 0x1F, 0xFF}), "001fff");
  EXPECT_EQ(ParseHexBytes("001fff"), (Bytes{0, 0x1F, 0xFF}));
  EXPECT_EQ(ParseHexBytes("001"), std::nullopt);
  EXPECT_EQ(ParseHexBytes("0g"), std::nullopt);
}

TEST(WorkStateTest, TellsWhatIsWrittenWhatIsHalfWrittenAndWhatIsAsBefore) {
  WorkState state;
  state.Plan({{0x0, 0x2FFF}}, "FORWARD", "BACK");
  EXPECT_EQ(state.Name(), "unchanged");
  EXPECT_EQ(state.Lines(), std::vector<std::string>{"nothing in the flash was changed"});
  state.Begin({0x0, 0xFFF});
  state.End({0x0, 0xFFF});
  state.Begin({0x1000, 0x1FFF});
  EXPECT_EQ(state.Name(), "partial");
  EXPECT_EQ(state.Lines(),
            (std::vector<std::string>{
                "the flash is changed in part: 0x0-0xfff is written; 0x1000-0x1fff is erased or "
                "half written; 0x2000-0x2fff is as before",
                "To continue: FORWARD\nTo go back: BACK"}));
  state.SetRestored();
  EXPECT_EQ(state.Lines(), std::vector<std::string>{"the flash is restored to its old bytes"});
}

TEST(WorkStateTest, WithoutABackupNoWayBackIsPromised) {
  WorkState state;
  state.Plan({{0x0, 0xFFF}}, "FORWARD", "");
  state.Begin({0x0, 0xFFF});
  EXPECT_EQ(state.Advice(), "To continue: FORWARD");
}

TEST(ReportTest, TimesAreInUtc) {
  EXPECT_EQ(TimeText(std::chrono::system_clock::from_time_t(1767323045)), "2026-01-02T03:04:05Z");
  EXPECT_EQ(SecondsText(0.125), "0.12 s");
  EXPECT_EQ(SecondsText(75), "75.0 s");
}

TEST(ProgramNamesTest, PartGoesBeforeTheExtension) {
  EXPECT_EQ(InsertBeforeExtension("a.b/report.json", "2"), "a.b/report-2.json");
  EXPECT_EQ(InsertBeforeExtension("a.b/report", "2"), "a.b/report-2");
  EXPECT_EQ(InsertBeforeExtension("C:\\x\\.hidden", "2"), "C:\\x\\.hidden-2");
}

TEST(ProgramNamesTest, WordsThatAShellWouldSplitStandInQuotes) {
  EXPECT_EQ(CommandLineText({"flash", "program", "my image.bin", "--camera", R"(\\?\usb#vid)"}),
            R"(borvanusb flash program "my image.bin" --camera "\\?\usb#vid")");
}

TEST(ProgramNamesTest, EveryOptionIsSaidAgain) {
  FlashProgramCommand command;
  command.image = "i.bin";
  command.address = 0x40000;
  command.flash_size = 1048576;
  command.verify = false;
  command.backup_file = "b.bin";
  command.restore_on_failure = true;
  command.force = true;
  command.report = "r.json";
  EXPECT_EQ(CommandLineText(ProgramWords(command)),
            "borvanusb flash program " + AbsoluteName("i.bin") +
                " --address 0x40000 --flash-size 1048576 --no-verify --backup " +
                AbsoluteName("b.bin") + " --restore-on-failure --force --report " +
                AbsoluteName("r.json"));
}

}  // namespace
}  // namespace borvanusb::tool_test
