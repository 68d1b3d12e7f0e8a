// flash program if bits are only cleared: no sector is erased, and an interruption destroys
// nothing.
#include "flash/engine/flash_words.h"
#include "flash/engine/sector_plan.h"
#include "flash_program_support.h"

namespace borvanusb::tool_test {
namespace {

class FlashWordsTest : public FlashProgramTest {
 protected:
  // The flash's own bytes from 0x1F00 on, with some bits cleared.
  FlashWordsTest() {
    Bytes image(before_.begin() + kAddress, before_.begin() + kAddress + kImageSize);
    for (const std::size_t at : {0U, 1U, 0x100U, 0x1100U, 0x14FFU}) {
      image[at] = 0;
    }
    UseImage(image, kAddress);
    command_.backup = false;
  }
};

TEST(ClearingWordsTest, AreTheWordsThatDiffer) {
  const Bytes now = {0xFF, 0xFF, 0xFF, 0xFF, 0x12, 0x34, 0x56, 0x78, 0xF0, 0x0F, 0x00, 0x01};
  const Bytes after = {0xFF, 0xFF, 0xFF, 0xFF, 0x12, 0x30, 0x56, 0x08, 0xF0, 0x0F, 0x00, 0x00};
  const auto words = ClearingWords(0x2000, now, after);
  ASSERT_TRUE(words);
  ASSERT_EQ(words->size(), 2U);
  EXPECT_EQ((*words)[0].address, 0x2004U);
  EXPECT_EQ((*words)[0].value, 0x12305608U);
  EXPECT_EQ((*words)[1].address, 0x2008U);
  EXPECT_EQ((*words)[1].value, 0xF00F0000U);
}

TEST(ClearingWordsTest, BitThatMustBeSetTakesAnErase) {
  EXPECT_FALSE(ClearingWords(0, Bytes{0xFF, 0xFF, 0xFF, 0xFE}, Bytes{0, 0, 0, 0xFF}));
}

TEST(SectorsOfFewWordsTest, ManyWordsGoByAJob) {
  const SectorSpan sector{0x3000, 0x1000};
  const Bytes now(0x1000, 0xFF);
  const Ranges runs = {sector.Whole()};
  // Few words in blank flash: a job erases, makes 2 length queries, and sends the packets that are
  // not blank.
  EXPECT_EQ(SectorsOfFewWords(runs, sector, now, Overlaid(now, 8, {1, 2, 3, 4})).size(), 1U);
  EXPECT_TRUE(SectorsOfFewWords(runs, sector, now, Bytes(0x1000, 0)).empty());
}

TEST_F(FlashWordsTest, NothingIsErased) {
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(Chip().erases, 0U);
  EXPECT_EQ(Chip().programmed_packets, 0U);
  EXPECT_FALSE(HasJournal());
  // 5 bytes in 4 words of 2 sectors. All sectors are read before, and these two afterwards.
  EXPECT_EQ(outcome.result["changed_bytes"], 0x3000);
  EXPECT_EQ(outcome.result["verified"], true);
}

TEST_F(FlashWordsTest, WithoutReadingBackJobsWrite) {
  command_.verify = false;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(Chip().erases, 3U);
}

TEST_F(FlashWordsTest, WordThatDidNotArriveIsWrittenByAJob) {
  bool is_lost = false;
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address == 0x2000 && !is_lost) {
      is_lost = true;
      std::copy_n(before_.begin() + 0x2000, bytes.size(), bytes.begin());
    }
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(Chip().erased_sectors, std::vector<std::uint32_t>{0x2000});
}

TEST_F(FlashWordsTest, CutAnywhereNothingBesideTheImageChangesAndASecondRunFinishes) {
  const std::uint64_t start = Chip().transfers;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  const std::uint64_t transfers = Chip().transfers - start;
  for (std::uint64_t transfer = 1; transfer <= transfers; ++transfer) {
    Flash() = before_;
    FailFrom(transfer);
    EXPECT_EQ(Program().code, ExitCode::kDevice) << transfer;
    const Bytes cut = host.chips.front()->flash;
    EXPECT_EQ(Overlaid(cut, kAddress, image_), Wanted()) << transfer;
    Heal();
    EXPECT_EQ(Program().code, ExitCode::kDone) << transfer;
    EXPECT_EQ(Flash(), Wanted()) << transfer;
    EXPECT_FALSE(HasJournal()) << transfer;
  }
}

TEST_F(FlashWordsTest, AfterACutTheFirstBackupStays) {
  command_.backup = true;
  const std::uint64_t start = Chip().transfers;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  const std::uint64_t transfers = Chip().transfers - start;
  for (const std::string& name : FilesWith("backup")) {
    std::filesystem::remove(File(name));
  }
  // The four words are written before the 192 transfers of reading back.
  for (std::uint64_t transfer = transfers - 192 - 3; transfer <= transfers; ++transfer) {
    Flash() = before_;
    FailFrom(transfer);
    EXPECT_EQ(Program().code, ExitCode::kDevice) << transfer;
    Heal();
    EXPECT_EQ(Program().code, ExitCode::kDone) << transfer;
    EXPECT_EQ(Flash(), Wanted()) << transfer;
    const std::vector<std::string> backups = FilesWith("backup");
    ASSERT_EQ(backups.size(), 1U) << transfer;
    EXPECT_EQ(ReadFile(backups.front()), Bytes(before_.begin() + 0x1000, before_.begin() + 0x4000));
    std::filesystem::remove(File(backups.front()));
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
