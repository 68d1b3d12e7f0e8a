// Other changes between interruption and repetition: images, restored backups, erasing, words.
#include "flash/erase.h"
#include "flash/word.h"
#include "flash_journal_support.h"

namespace borvanusb::tool_test {
namespace {

TEST_F(FlashJournalTest, WhatAnotherImageWroteBesideSinceStays) {
  // The sector 0x3000 was unfinished; then another image is programmed directly after the first
  // one.
  FailFrom(kBefore + 2 * kSectorTransfers + 64 + 2);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  EXPECT_EQ(OnlyJournal().open_sector->address, 0x3000U);
  FlashProgramCommand behind = CommandFor("b/blank.bin", Bytes(0x420, 0xFF), kAddress + kSize);
  behind.force = true;
  EXPECT_EQ(Run(behind).code, ExitCode::kDone);
  const Bytes wanted = Overlaid(Wanted(), kAddress + kSize, Bytes(0x420, 0xFF));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), wanted);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, UnrelatedSectorInBetweenIsNoDeadEnd) {
  command_.backup = true;
  CutOffAfterErasing();
  // Inside the image, and elsewhere.
  const Bytes other = Pattern(0x1000, 9);
  EXPECT_EQ(Run(CommandFor("b/other.bin", other, 0x2000)).code, ExitCode::kDone);
  EXPECT_EQ(Run(CommandFor("b/far.bin", other, 0x8000)).code, ExitCode::kDone);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Overlaid(Wanted(), 0x8000, other));
}

TEST_F(FlashJournalTest, AnotherImageElsewhereLeavesTheJournalForLater) {
  CutOffAfterErasing();
  const Bytes other = Pattern(0x100, 7);
  EXPECT_EQ(Run(CommandFor("b/other.bin", other, 0x8080)).code, ExitCode::kDone);
  EXPECT_TRUE(HasJournal());
  EXPECT_NE(output->notes.find("stays unfinished; " + Journals().at(0) +
                               " holds the bytes beside it in 0x1000-0x1fff"),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(Wanted(), 0x8080, other));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, ImageThatCoversTheSectorNeedsNoJournal) {
  CutOffAfterErasing();
  const Bytes whole = Pattern(0x3000, 8);
  EXPECT_EQ(Run(CommandFor("whole.bin", whole, 0x1000)).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x1000, whole));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, BackupOfAnotherImageHoldsTheBytesFromTheJournal) {
  CutOffAfterErasing();
  FlashProgramCommand whole = CommandFor("whole.bin", Pattern(0x3000, 8), 0x1000);
  whole.backup = true;
  whole.backup_file = File("old.bin");
  EXPECT_EQ(Run(whole).code, ExitCode::kDone);
  const Bytes backup = ReadFile("old.bin");
  EXPECT_EQ(Bytes(backup.begin(), backup.begin() + 0x1000),
            Bytes(before_.begin() + 0x1000, before_.begin() + 0x2000));
}

TEST_F(FlashJournalTest, BackupIsTheWayBackAfterACut) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  EXPECT_EQ(Run(CommandFor("again.bin", ReadFile("old.bin"), 0x1000)).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashJournalTest, BackupThatWasChangedSinceIsMadeAnew) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  WriteFile("old.bin", Bytes(0x3000, 1));
  command_.backup_file = File("new.bin");
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(ReadFile("new.bin").size(), 0x3000U);  // from the first to the last sector
}

// ---- Erasing, words -----------------------------------------------------------------------------

TEST_F(FlashJournalTest, EraseKeepsABackupAndItsFirstOneAfterACut) {
  FlashEraseCommand erase;
  erase.range = {0x1000, 0x3FFF};
  erase.yes = true;
  erase.backup_file = File("erased.bin");
  FailFrom(kBefore + 2);
  EXPECT_EQ(Run(erase).code, ExitCode::kDevice);
  Heal();
  EXPECT_EQ(Run(erase).code, ExitCode::kDone);
  EXPECT_EQ(ReadFile("erased.bin"), Bytes(before_.begin() + 0x1000, before_.begin() + 0x4000));
  EXPECT_EQ(Flash(), Overlaid(before_, 0x1000, Bytes(0x3000, 0xFF)));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, EraseOfASectorOnItsWayEndsItsJournal) {
  CutOffAfterErasing();
  FlashEraseCommand erase;
  erase.range = {0x1000, 0x3FFF};
  erase.yes = true;
  erase.backup = false;
  EXPECT_EQ(Run(erase).code, ExitCode::kDone);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, WordKeepsABackupOfItsBytes) {
  FlashWordCommand word;
  word.address = 0x1010;
  word.value = 0;
  word.yes = true;
  word.backup_file = File("word.bin");
  EXPECT_EQ(Run(word).code, ExitCode::kDone);
  EXPECT_EQ(ReadFile("word.bin"), Bytes(before_.begin() + 0x1010, before_.begin() + 0x1014));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, WordInASectorOnItsWayIsRefused) {
  CutOffAfterErasing();
  const Bytes state = Flash();
  FlashWordCommand word;
  word.address = 0x1010;
  word.value = 0;
  word.yes = true;
  word.backup = false;
  const Outcome outcome = Run(word);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_EQ(outcome.hint, "Repeat that command first.");
  EXPECT_EQ(Flash(), state);
}

}  // namespace
}  // namespace borvanusb::tool_test
