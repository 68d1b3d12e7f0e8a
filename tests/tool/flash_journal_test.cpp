// The journal: whose bytes it contains, when it is used, and when the user must decide.
#include "flash_journal_support.h"

namespace borvanusb::tool_test {
namespace {

TEST_F(FlashJournalTest, JournalHoldsTheSharedSectorWhileItIsOnItsWay) {
  CutOffAfterErasing();
  const Journal journal = OnlyJournal();
  EXPECT_EQ(journal.command, "flash program");
  EXPECT_TRUE(journal.ranges.empty());  // only several images have them
  const std::string name = Journals().at(0);
  const std::string random = name.substr(name.rfind('-') + 1);
  EXPECT_EQ(random.find_first_not_of("0123456789abcdef"), 8U) << name;
  EXPECT_EQ(journal.camera, Chip().identity.path);
  EXPECT_EQ(journal.image, AbsoluteName(command_.image));
  ASSERT_TRUE(journal.open_sector);
  EXPECT_EQ(journal.open_sector->address, 0x1000U);
  EXPECT_EQ(journal.open_sector->original,
            Bytes(before_.begin() + 0x1000, before_.begin() + 0x2000));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_NE(output->notes.find("was interrupted; the bytes beside it in 0x1000-0x1fff come from "),
            std::string::npos)
      << output->notes;
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, FailureNamesTheFileWithTheBytesBeside) {
  FailFrom(kBefore + kSectorTransfers + 2);
  const Outcome outcome = Run(command_);
  EXPECT_NE(outcome.message.find("the bytes beside the image in 0x1000-0x1fff are in " +
                                 Journals().at(0)),
            std::string::npos)
      << outcome.message;
}

TEST_F(FlashJournalTest, NothingIsTouchedWhenNoJournalCanBeWritten) {
  WriteFile("file", Bytes(1));
  host.journal_folder = File("file") + "/journals";
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_TRUE(outcome.message.starts_with("the journal: can't make the folder "))
      << outcome.message;
  EXPECT_TRUE(outcome.message.ends_with("; nothing in the flash was changed")) << outcome.message;
  EXPECT_EQ(Chip().erases, 0U);
}

TEST_F(FlashJournalTest, AlignedImageWithoutBackupNeedsNoJournal) {
  command_ = CommandFor("image.bin", Pattern(0x2000, 3), 0x2000);
  FailFrom(128 + 2 + 10);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, DryRunLeavesTheJournalAlone) {
  CutOffAfterErasing();
  command_.dry_run = true;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_TRUE(HasJournal());
  command_.dry_run = false;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
}

// ---- From another folder, under another spelling ------------------------------------------------

TEST_F(FlashJournalTest, ResumedFromAnotherFolderTheFirstBackupStays) {
  command_.backup = true;
  command_.backup_file = File("a/old.bin");
  CutOffAfterErasing();
  const Bytes first = ReadFile("a/old.bin");
  EXPECT_EQ(first, Bytes(before_.begin() + 0x1000, before_.begin() + 0x4000));
  command_.image = File("b/../a/image.bin");
  command_.backup_file = File("b/../a/./old.bin");
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(ReadFile("a/old.bin"), first);
  EXPECT_EQ(outcome.result["backup"], AbsoluteName(File("a/old.bin")));
}

TEST_F(FlashJournalTest, WayBackIsTheFirstBackupEvenIfNobodyNamesItAgain) {
  command_.backup = true;
  command_.backup_file = File("a/old.bin");
  CutOffAfterErasing();
  command_.image = WriteFile("b/image.bin", image_);
  command_.backup_file.clear();
  FailFrom(kBefore + 100);
  const Outcome outcome = Run(command_);
  EXPECT_NE(
      outcome.hint.find("To go back: borvanusb flash program " + AbsoluteName(File("a/old.bin"))),
      std::string::npos)
      << outcome.hint;
  Heal();
  command_.restore_on_failure = true;
  FailAt(kBefore + 100);
  EXPECT_NE(Run(command_).message.find("restored to its old bytes"), std::string::npos);
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashJournalTest, ExistingFileIsNeverOverwrittenByABackup) {
  command_.backup = true;
  command_.backup_file = WriteFile("a/old.bin", Bytes{1, 2, 3});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("old.bin exists already and is not overwritten"),
            std::string::npos);
  EXPECT_EQ(ReadFile("a/old.bin"), (Bytes{1, 2, 3}));
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashJournalTest, AnotherSpellingOfTheImageIsStillTheImage) {
  command_.backup = true;
  for (const char* spelling : {"a/./image.bin", "b/../a/image.bin"}) {
    command_.backup_file = File(spelling);
    EXPECT_EQ(Run(command_).code, ExitCode::kUsage) << spelling;
  }
  command_.backup_file.clear();
  command_.report = File("b/../a/image.bin");
  EXPECT_EQ(Run(command_).code, ExitCode::kUsage);
  command_.backup_file = File("a/one.json");
  command_.report = File("b/../a/one.json");
  EXPECT_EQ(Run(command_).code, ExitCode::kUsage);
  EXPECT_EQ(ReadFile("a/image.bin"), image_);
}

TEST_F(FlashJournalTest, NextVersionFromItsOwnFolderGetsTheBytesBeside) {
  CutOffAfterErasing();
  const Bytes next = Pattern(kSize + 0x80, 7);
  EXPECT_EQ(Run(CommandFor("b/next.bin", next, kAddress)).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, kAddress, next));
  EXPECT_FALSE(HasJournal());
}

// ---- Files that are no journal ------------------------------------------------------------------

TEST_F(FlashJournalTest, JournalThatIsNamedMustBeOne) {
  command_.journal = WriteFile("a/some.journal", Bytes{'{', '}'});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashJournalTest, FileThatIsNoJournalIsRefused) {
  CutOffAfterErasing();
  const std::string journal = Journals().at(0);
  const std::string name = journal.substr(File("").size());
  const Bytes whole = ReadFile(name);
  const Bytes state = Flash();
  for (const Bytes& bytes : {Bytes{'{', '}'}, Bytes{}, Bytes(whole.begin(), whole.end() - 100)}) {
    WriteFile(name, bytes);
    const Outcome outcome = Run(command_);
    EXPECT_EQ(outcome.code, ExitCode::kFile);
    EXPECT_NE(outcome.message.find("it is not a valid journal"), std::string::npos)
        << outcome.message;
    EXPECT_EQ(Flash(), state);
  }
}

// ---- What must not be written -------------------------------------------------------------------

TEST_F(FlashJournalTest, NothingIsWrittenBackBesideACallThatHangs) {
  command_.backup = true;
  command_.restore_on_failure = true;
  FailAt(kBefore + 10, ExitCode::kTimeout);
  const std::uint64_t first = Chip().transfers;
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kTimeout);
  EXPECT_NE(
      outcome.message.find("the old bytes are not written back, since the camera may still be "
                           "at work"),
      std::string::npos)
      << outcome.message;
  EXPECT_EQ(Chip().transfers - first, kBefore + 10);
  EXPECT_NE(outcome.hint.find("To go back: "), std::string::npos);
}

TEST_F(FlashJournalTest, SharedSectorThatComesOutWrongIsReadBackBeforeAnythingElseIsTouched) {
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x1010 && 0x1010 < address + bytes.size()) {
      bytes[0x1010 - address] = 0;
    }
  };
  EXPECT_EQ(Run(command_).code, ExitCode::kVerify);
  EXPECT_EQ(Chip().erased_sectors, (std::vector<std::uint32_t>{0x2000, 0x1000, 0x1000}));
  Heal();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
}

}  // namespace
}  // namespace borvanusb::tool_test
