// An image with gaps, interrupted at any transfer: a simple second run must finish the work, and
// the bytes in the gaps and beside the image must be unchanged.
#include <algorithm>
#include <utility>

#include "base/files.h"
#include "base/numbers.h"
#include "flash_cut_support.h"
#include "images/intel_hex.h"

namespace borvanusb::tool_test {
namespace {

class FlashSegmentsCutTest : public FlashCutFixture {
 protected:
  FlashSegmentsCutTest() {
    // Two pieces in the sector 0x1000, one of which continues into 0x2000; two in 0x5000; one that
    // fills 0x9000 and a part of 0xa000. The sectors between are not changed.
    Segments segments;
    for (const auto& [address, size] : std::vector<std::pair<std::uint32_t, std::size_t>>{
             {0x1100, 0x80}, {0x1F00, 0x200}, {0x5000, 0x100}, {0x5F00, 0x100}, {0x9000, 0x1123}}) {
      segments.push_back({address, Pattern(size, address)});
    }
    const std::string text = IntelHexText(segments);
    Measure(WriteFile("image.hex", Bytes(text.begin(), text.end())), std::nullopt, segments);
  }
};

TEST_F(FlashSegmentsCutTest, OnlySectorsOfTheImageAreReadAndErased) {
  Chip().erased_sectors.clear();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  std::vector<std::uint32_t> erased = Chip().erased_sectors;
  std::ranges::sort(erased);
  EXPECT_EQ(erased, (std::vector<std::uint32_t>{0x1000, 0x2000, 0x5000, 0x9000, 0xA000}));
}

TEST_F(FlashSegmentsCutTest, CutAtEachTransferIsMendedByASecondRun) {
  ExpectEveryCutIsMended(ExitCode::kDevice, 2);
}

TEST_F(FlashSegmentsCutTest, SecondRunThatIsCutTooIsMendedByAThird) {
  ExpectTwoCutsAreMended(300, 53, 59);
}

TEST_F(FlashSegmentsCutTest, FirstBackupStaysAndLeadsBack) {
  command_.backup = true;
  command_.backup_file = File("old.hex");
  FlashProgramCommand back;
  back.image = File("old.hex");
  back.backup = false;
  for (std::uint64_t transfer = 330; transfer <= transfers_; transfer += Step(7)) {
    Flash() = before_;
    FailFrom(transfer);
    EXPECT_EQ(Run(command_).code, ExitCode::kDevice) << transfer;
    EXPECT_TRUE(FileExists(File("old.hex"))) << transfer;
    ExpectSecondRunFinishes(std::to_string(transfer));
    EXPECT_EQ(Run(back).code, ExitCode::kDone) << transfer;
    EXPECT_TRUE(Flash() == before_) << transfer;
    std::filesystem::remove(File("old.hex"));
  }
}

TEST_F(FlashSegmentsCutTest, BackupHoldsTheSectorsWithoutTheGaps) {
  command_.backup = true;
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  const std::vector<std::string> names = FilesWith("backup");
  ASSERT_EQ(names.size(), 1U);
  EXPECT_TRUE(names[0].ends_with("-0x00001000-20260102T030405Z.hex")) << names[0];
  const Bytes file = ReadFile(names[0]);
  const auto part = [&](std::size_t first, std::size_t end) {
    return Bytes(before_.begin() + static_cast<std::ptrdiff_t>(first),
                 before_.begin() + static_cast<std::ptrdiff_t>(end));
  };
  EXPECT_EQ(ReadIntelHex(file).segments, (Segments{{0x1000, part(0x1000, 0x3000)},
                                                   {0x5000, part(0x5000, 0x6000)},
                                                   {0x9000, part(0x9000, 0xB000)}}));
}

TEST_F(FlashSegmentsCutTest, WayBackNamesTheFormatOfTheBackup) {
  command_.backup = true;
  command_.backup_file = File("old.bak");
  FailFrom(400);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDevice);
  EXPECT_NE(outcome.hint.find("To continue: borvanusb flash program " + command_.image +
                              " --backup " + command_.backup_file + " --camera"),
            std::string::npos)
      << outcome.hint;
  EXPECT_NE(outcome.hint.find("To go back: borvanusb flash program " + command_.backup_file +
                              " --format hex --camera"),
            std::string::npos)
      << outcome.hint;
}

TEST_F(FlashSegmentsCutTest, RestoringAfterAnyTransferGivesTheOldBytesBack) {
  command_.backup = true;
  ExpectEveryFailureIsRestored(5);
}

// Only versions that support gaps can read a journal of a change with gaps.
TEST_F(FlashSegmentsCutTest, JournalNamesEachPiece) {
  FailFrom(400);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  ASSERT_EQ(Journals().size(), 1U);
  const auto journal = nlohmann::json::parse(ReadWholeText(Journals()[0]));
  EXPECT_EQ(journal["borvanusb_journal"], 3);
  EXPECT_EQ(journal["ranges"].dump(),
            "[[4352,4479],[7936,8447],[20480,20735],[24320,24575],[36864,41250]]");
  EXPECT_EQ(journal["address"], 0x1100);
  EXPECT_EQ(journal["size"], 0xA123 - 0x1100);
}

// The same pieces come from a file of another format, in another order. They are recognised as the
// same work.
TEST_F(FlashSegmentsCutTest, WorkIsKnownAgainByItsBytes) {
  command_.backup = true;
  command_.backup_file = File("old.hex");
  FailFrom(600);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  FlashProgramCommand again;
  std::vector<std::string> names;
  for (const Segment& segment : segments_) {
    names.push_back(WriteFile(Hex(segment.address) + ".bin", segment.bytes));
  }
  again.image = names.front();
  again.address = segments_.front().address;
  for (std::size_t i = 1; i < segments_.size(); ++i) {
    again.more.push_back({names[i], segments_[i].address});
  }
  const Outcome outcome = Run(again);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(outcome.result["backup"], File("old.hex"));
  EXPECT_FALSE(HasJournal());
}

}  // namespace
}  // namespace borvanusb::tool_test
