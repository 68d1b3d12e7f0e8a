// The journal: whose bytes it holds, when they count, and when nothing may be guessed.
#include "flash_support.h"

namespace tool_test {
namespace {

constexpr std::uint32_t kAddress = 0x1F00;

class FlashJournalTest : public FlashTest {
 protected:
  FlashJournalTest() {
    flash() = Pattern(64 * 1024, 1);
    before_ = flash();
    image_ = Pattern(0x1500, 2);
    command_ = CommandFor("image.bin", image_, kAddress);
  }

  FlashProgramCommand CommandFor(const std::string& name, const Bytes& image,
                                 std::uint32_t address) {
    FlashProgramCommand command;
    command.image = WriteFile(name, image);
    command.address = address;
    command.backup = false;
    return command;
  }

  // Both half-used sectors are erased, nothing is written: their other bytes are in the journal
  // alone.
  void CutOffAfterErasing() {
    FailFrom(192 + 3 + 1);
    EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
    EXPECT_EQ(Bytes(flash().begin() + 0x1000, flash().begin() + 0x4000), Bytes(0x3000, 0xFF));
    Heal();
  }
  Bytes Wanted() const { return Overlaid(before_, kAddress, image_); }

  Bytes before_;
  Bytes image_;
  FlashProgramCommand command_;
};

TEST_F(FlashJournalTest, JournalLiesBesideTheImageUnderTheCamerasName) {
  CutOffAfterErasing();
  EXPECT_TRUE(JournalFile().starts_with("borvanusb-1234-0001-")) << JournalFile();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_NE(output->notes.find("was cut off; the bytes beside it in 0x1000-0x1fff come from "),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(JournalFile(), "");
}

// A readable file in a folder that takes no other, not even from the system's administrator.
constexpr const char* kImageInReadOnlyFolder = "/proc/self/cmdline";

TEST_F(FlashJournalTest, NothingIsTouchedWhenNoJournalCanBeWritten) {
  if (!std::filesystem::exists(kImageInReadOnlyFolder)) {
    GTEST_SKIP() << "this system has no such folder";
  }
  command_.image = kImageInReadOnlyFolder;
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_TRUE(outcome.message.starts_with("the bytes beside the image can't be kept safe: "))
      << outcome.message;
  EXPECT_TRUE(outcome.message.ends_with("; nothing in the flash was changed")) << outcome.message;
  EXPECT_EQ(chip().erases, 0U);
  EXPECT_EQ(flash(), before_);
}

TEST_F(FlashJournalTest, JournalLiesBesideTheBackupWhenTheImagesFolderTakesNone) {
  if (!std::filesystem::exists(kImageInReadOnlyFolder)) {
    GTEST_SKIP() << "this system has no such folder";
  }
  command_.image = kImageInReadOnlyFolder;
  command_.backup = true;
  command_.backup_file = File("old.bin");
  FailFrom(64 + 1 + 1);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  EXPECT_NE(JournalFile(), "");
  Heal();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(JournalFile(), "");
  std::ifstream stream(kImageInReadOnlyFolder, std::ios::binary);
  const Bytes words{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  EXPECT_EQ(flash(), Overlaid(before_, kAddress, words));
}

TEST_F(FlashJournalTest, AlignedImageWithoutBackupNeedsNoJournal) {
  command_ = CommandFor("image.bin", Pattern(0x2000, 3), 0x2000);
  FailFrom(128 + 2 + 10);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, DryRunLeavesTheJournalAlone) {
  CutOffAfterErasing();
  command_.dry_run = true;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_NE(JournalFile(), "");
  command_.dry_run = false;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
}

TEST_F(FlashJournalTest, AnotherImageGetsTheSameBytesBeside) {
  CutOffAfterErasing();
  const Bytes other = Pattern(0x1500, 7);
  EXPECT_EQ(Run(CommandFor("other.bin", other, kAddress)).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, kAddress, other));
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, AnotherImageAtAnotherPlaceInTheSectorGetsThemToo) {
  CutOffAfterErasing();
  const Bytes other = Pattern(0x100, 7);
  EXPECT_EQ(Run(CommandFor("other.bin", other, 0x1200)).code, ExitCode::kDone);
  // The first sector's bytes are back; the cut-off image's own stay as they are.
  Bytes wanted = before_;
  std::fill(wanted.begin() + kAddress, wanted.begin() + 0x4000, std::uint8_t{0xFF});
  EXPECT_EQ(flash(), Overlaid(wanted, 0x1200, other));
  // The last sector's bytes are still only in the journal.
  EXPECT_NE(JournalFile(), "");
  EXPECT_NE(output->notes.find("is left as it is"), std::string::npos) << output->notes;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(Overlaid(before_, 0x1200, other), kAddress, image_));
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, AnotherImageElsewhereLeavesTheJournalForLater) {
  CutOffAfterErasing();
  const Bytes other = Pattern(0x100, 7);
  EXPECT_EQ(Run(CommandFor("other.bin", other, 0x8080)).code, ExitCode::kDone);
  EXPECT_NE(JournalFile(), "");
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(Wanted(), 0x8080, other));
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, AnotherImageThatIsCutOffTooLosesNothing) {
  const Bytes other = Pattern(0x1500, 7);
  const FlashProgramCommand second = CommandFor("other.bin", other, kAddress + 0x40);
  for (std::uint64_t transfer = 180; transfer < 620; transfer += 11) {
    flash() = before_;
    CutOffAfterErasing();
    FailFrom(transfer);
    Run(second);
    Heal();
    EXPECT_EQ(Run(second).code, ExitCode::kDone) << transfer;
    // What lay under the cut-off image alone is lost with it; all else is as before.
    Bytes wanted = Overlaid(before_, kAddress + 0x40, other);
    std::fill_n(wanted.begin() + kAddress, 0x40, std::uint8_t{0xFF});
    EXPECT_TRUE(flash() == wanted) << transfer;
    EXPECT_EQ(JournalFile(), "") << transfer;
  }
}

TEST_F(FlashJournalTest, AnotherCamerasBytesAreNotTakenForThisOnes) {
  CutOffAfterErasing();
  // Another camera at the same place: other bytes beside the image.
  flash() = Pattern(64 * 1024, 99);
  const Bytes others = flash();
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("the sector 0x1000-0x1fff holds neither what was there before nor "
                                 "what was being written; nothing in the flash was changed"),
            std::string::npos)
      << outcome.message;
  EXPECT_NE(outcome.hint.find("remove that file and run again"), std::string::npos);
  EXPECT_EQ(flash(), others);
  EXPECT_NE(JournalFile(), "");
  std::filesystem::remove(File(JournalFile()));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(others, kAddress, image_));
}

TEST_F(FlashJournalTest, CameraWithTheSameBytesBesideIsNoQuestion) {
  CutOffAfterErasing();
  flash() = before_;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, ImageThatCoversTheSectorsIsNoQuestionEither) {
  CutOffAfterErasing();
  flash() = Pattern(64 * 1024, 99);
  const Bytes others = flash();
  const Bytes whole = Pattern(0x3000, 8);
  EXPECT_EQ(Run(CommandFor("whole.bin", whole, 0x1000)).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(others, 0x1000, whole));
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, BackupOfAnotherImageHoldsTheBytesFromTheJournal) {
  CutOffAfterErasing();
  FlashProgramCommand whole = CommandFor("whole.bin", Pattern(0x3000, 8), 0x1000);
  whole.backup = true;
  whole.backup_file = File("old.bin");
  EXPECT_EQ(Run(whole).code, ExitCode::kDone);
  const Bytes backup = ReadFile("old.bin");
  EXPECT_EQ(Bytes(backup.begin(), backup.begin() + 0xF00),
            Bytes(before_.begin() + 0x1000, before_.begin() + 0x1F00));
  EXPECT_EQ(Bytes(backup.begin() + 0x2400, backup.end()),
            Bytes(before_.begin() + 0x3400, before_.begin() + 0x4000));
}

TEST_F(FlashJournalTest, BackupIsTheWayBackAfterACut) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  EXPECT_EQ(Run(CommandFor("old.bin", ReadFile("old.bin"), 0x1000)).code, ExitCode::kDone);
  EXPECT_EQ(flash(), before_);
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, BackupOfUnfinishedWorkIsNotOverwrittenByAnotherImages) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  FlashProgramCommand other = CommandFor("other.bin", Pattern(0x100, 7), 0x8000);
  other.backup = true;
  other.backup_file = command_.backup_file;
  const Outcome outcome = Run(other);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("holds the bytes from before the unfinished programming"),
            std::string::npos);
  EXPECT_EQ(ReadFile("old.bin"), Bytes(before_.begin() + 0x1000, before_.begin() + 0x4000));
}

TEST_F(FlashJournalTest, BackupOfAnotherCamerasUnfinishedWorkIsNotOverwritten) {
  command_ = CommandFor("image.bin", Pattern(0x2000, 3), 0x2000);
  command_.backup = true;
  command_.backup_file = File("old.bin");
  FailFrom(128 + 2 + 10);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  flash() = Pattern(64 * 1024, 99);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("holds neither the bytes of its backup"), std::string::npos)
      << outcome.message;
  EXPECT_EQ(ReadFile("old.bin"), Bytes(before_.begin() + 0x2000, before_.begin() + 0x4000));
}

TEST_F(FlashJournalTest, BackupThatWasChangedSinceIsMadeAnew) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  WriteFile("old.bin", Bytes(0x3000, 1));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
}

TEST_F(FlashJournalTest, FileThatIsNoJournalIsRefused) {
  CutOffAfterErasing();
  const std::string journal = JournalFile();
  const Bytes whole = ReadFile(journal);
  const Bytes state = flash();
  for (const Bytes& bytes : {Bytes{'{', '}'}, Bytes{}, Bytes(whole.begin(), whole.end() - 100)}) {
    WriteFile(journal, bytes);
    const Outcome outcome = Run(command_);
    EXPECT_EQ(outcome.code, ExitCode::kFile);
    EXPECT_NE(outcome.message.find("it is no journal"), std::string::npos) << outcome.message;
    EXPECT_EQ(flash(), state);
  }
}

TEST_F(FlashJournalTest, CameraThatWasPluggedInElsewhereIsNotedAndItsJournalKept) {
  CutOffAfterErasing();
  const std::string former = chip().identity.path;
  chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_NE(output->notes.find(former + "; if it is this one, plug it in where it was"),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(FilesWith(".journal").size(), 1U);
  chip().identity.path = former;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_EQ(JournalFile(), "");
}

TEST_F(FlashJournalTest, TwoCamerasOfOneKindHaveJournalsOfTheirOwn) {
  auto second = std::make_shared<FakeChip>();
  second->identity.path = R"(\\?\usb#vid_1234&pid_0001#b)";
  second->flash = Pattern(64 * 1024, 5);
  host.chips.push_back(second);
  common.cameras = {"0"};
  CutOffAfterErasing();
  common.cameras = {"1"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(second->flash, Overlaid(Pattern(64 * 1024, 5), kAddress, image_));
  EXPECT_EQ(FilesWith(".journal").size(), 1U);
  common.cameras = {"0"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
}

}  // namespace
}  // namespace tool_test
