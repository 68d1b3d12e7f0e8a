// The journal: whose bytes it holds, when they count, and when nothing may be guessed.
#include <algorithm>

#include "base/files.h"
#include "flash/engine/journal.h"
#include "flash/erase.h"
#include "flash/program.h"
#include "flash/word.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

constexpr std::uint32_t kAddress = 0x1F00;
// From 0x1f00 to 0x33ff: shares the sectors 0x1000 and 0x3000 with other bytes, fills 0x2000.
constexpr std::size_t kSize = 0x1500;
// Transfers before the first erase: the look at three sectors and nine landmarks.
constexpr std::uint64_t kBefore = 3 * 64 + 9;
// A whole sector: erase, 68 packets, 4 words.
constexpr std::uint64_t kSectorTransfers = 1 + 68 + 4;

class FlashJournalTest : public FlashTest {
 protected:
  FlashJournalTest() {
    flash() = Pattern(64 * 1024, 1);
    before_ = flash();
    image_ = Pattern(kSize, 2);
    std::filesystem::create_directories(File("a"));
    std::filesystem::create_directories(File("b"));
    command_ = CommandFor("a/image.bin", image_, kAddress);
  }

  FlashProgramCommand CommandFor(const std::string& name, const Bytes& image,
                                 std::uint32_t address) {
    FlashProgramCommand command;
    command.image = WriteFile(name, image);
    command.address = address;
    command.backup = false;
    return command;
  }

  // The whole sector is written, 0x1000 is erased: the bytes beside the image there are in the
  // journal alone.
  void CutOffAfterErasing() {
    FailFrom(kBefore + kSectorTransfers + 2);
    EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
    EXPECT_EQ(Bytes(flash().begin() + 0x1000, flash().begin() + 0x2000), Bytes(0x1000, 0xFF));
    Heal();
  }
  Bytes Wanted() const { return Overlaid(before_, kAddress, image_); }
  Journal OnlyJournal() const {
    EXPECT_EQ(Journals().size(), 1U);
    return ParseJournal(ReadWholeText(Journals().at(0)));
  }

  Bytes before_;
  Bytes image_;
  FlashProgramCommand command_;
};

TEST_F(FlashJournalTest, JournalHoldsTheSharedSectorWhileItIsOnItsWay) {
  CutOffAfterErasing();
  const Journal journal = OnlyJournal();
  EXPECT_EQ(journal.command, "flash program");
  EXPECT_EQ(journal.camera, chip().identity.path);
  EXPECT_EQ(journal.image, AbsoluteName(command_.image));
  ASSERT_TRUE(journal.open_sector);
  EXPECT_EQ(journal.open_sector->address, 0x1000U);
  EXPECT_EQ(journal.open_sector->original,
            Bytes(before_.begin() + 0x1000, before_.begin() + 0x2000));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_NE(output->notes.find("was cut off; the bytes beside it in 0x1000-0x1fff come from "),
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
  EXPECT_EQ(chip().erases, 0U);
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
  EXPECT_EQ(flash(), Wanted());
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
  EXPECT_EQ(flash(), Wanted());
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
  EXPECT_EQ(flash(), before_);
}

TEST_F(FlashJournalTest, ExistingFileIsNeverOverwrittenByABackup) {
  command_.backup = true;
  command_.backup_file = WriteFile("a/old.bin", Bytes{1, 2, 3});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("old.bin exists already and is not overwritten"),
            std::string::npos);
  EXPECT_EQ(ReadFile("a/old.bin"), (Bytes{1, 2, 3}));
  EXPECT_EQ(flash(), before_);
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
  EXPECT_EQ(flash(), Overlaid(before_, kAddress, next));
  EXPECT_FALSE(HasJournal());
}

// ---- Other changes between the cut and the repetition -------------------------------------------

TEST_F(FlashJournalTest, WhatAnotherImageWroteBesideSinceStays) {
  // The sector 0x3000 was on its way; then another image goes right behind the first one.
  FailFrom(kBefore + 2 * kSectorTransfers + 64 + 2);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  EXPECT_EQ(OnlyJournal().open_sector->address, 0x3000U);
  FlashProgramCommand behind = CommandFor("b/blank.bin", Bytes(0x420, 0xFF), kAddress + kSize);
  behind.force = true;
  EXPECT_EQ(Run(behind).code, ExitCode::kDone);
  const Bytes wanted = Overlaid(Wanted(), kAddress + kSize, Bytes(0x420, 0xFF));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), wanted);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, UnrelatedSectorInBetweenIsNoDeadEnd) {
  command_.backup = true;
  CutOffAfterErasing();
  // Within the image, and elsewhere.
  const Bytes other = Pattern(0x1000, 9);
  EXPECT_EQ(Run(CommandFor("b/other.bin", other, 0x2000)).code, ExitCode::kDone);
  EXPECT_EQ(Run(CommandFor("b/far.bin", other, 0x8000)).code, ExitCode::kDone);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(flash(), Overlaid(Wanted(), 0x8000, other));
}

TEST_F(FlashJournalTest, AnotherImageElsewhereLeavesTheJournalForLater) {
  CutOffAfterErasing();
  const Bytes other = Pattern(0x100, 7);
  EXPECT_EQ(Run(CommandFor("b/other.bin", other, 0x8080)).code, ExitCode::kDone);
  EXPECT_TRUE(HasJournal());
  EXPECT_NE(output->notes.find("is left as it is; " + Journals().at(0) +
                               " holds the bytes beside it in 0x1000-0x1fff"),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(Wanted(), 0x8080, other));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, ImageThatCoversTheSectorNeedsNoJournal) {
  CutOffAfterErasing();
  const Bytes whole = Pattern(0x3000, 8);
  EXPECT_EQ(Run(CommandFor("whole.bin", whole, 0x1000)).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, 0x1000, whole));
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
  EXPECT_EQ(flash(), before_);
}

TEST_F(FlashJournalTest, BackupThatWasChangedSinceIsMadeAnew) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  CutOffAfterErasing();
  WriteFile("old.bin", Bytes(0x3000, 1));
  command_.backup_file = File("new.bin");
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_EQ(ReadFile("new.bin").size(), 0x3000U);  // from the first to the last sector
}

// ---- Other cameras, other ports -----------------------------------------------------------------

TEST_F(FlashJournalTest, SameCameraAtAnotherPortIsKnownByItsContent) {
  CutOffAfterErasing();
  chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

// A later change, cut off too, lies over a word by which the camera is known.
TEST_F(FlashJournalTest, LaterCutOverALandmarkHidesNoCamera) {
  CutOffAfterErasing();
  const Bytes later = Pattern(0x300, 7);
  FailFrom(64 + 9 + 5);
  EXPECT_EQ(Run(CommandFor("b/later.bin", later, 0x5500)).code, ExitCode::kDevice);
  ASSERT_EQ(Bytes(flash().begin() + 0x5528, flash().begin() + 0x552C), Bytes(4, 0xFF));
  Heal();
  chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  const Bytes wanted = Wanted();
  EXPECT_EQ(Bytes(flash().begin() + 0x1000, flash().begin() + 0x4000),
            Bytes(wanted.begin() + 0x1000, wanted.begin() + 0x4000));
}

TEST_F(FlashJournalTest, BlankCameraAtTheSamePlaceIsNotGivenTheOthersBytes) {
  CutOffAfterErasing();
  flash() = Bytes(64 * 1024, 0xFF);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find(
                "it is not clear whether that was with this camera: the rest of this flash is "
                "not as that camera's; nothing in the flash was changed"),
            std::string::npos)
      << outcome.message;
  EXPECT_NE(outcome.hint.find(
                "add --journal none: the sector keeps the bytes it holds, and the journal stays"),
            std::string::npos)
      << outcome.hint;
  EXPECT_EQ(flash(), Bytes(64 * 1024, 0xFF));
  command_.journal = "none";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(Bytes(64 * 1024, 0xFF), kAddress, image_));
  EXPECT_TRUE(HasJournal());
  // The camera that was cut off comes back.
  command_.journal.clear();
  flash() = Overlaid(Overlaid(before_, 0x1000, Bytes(0x1000, 0xFF)), 0x2000,
                     Bytes(image_.begin() + 0x100, image_.begin() + 0x1100));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, OtherCameraAtTheSamePlaceKeepsItsBytesAndTheJournalStays) {
  CutOffAfterErasing();
  flash() = Pattern(64 * 1024, 99);
  const Bytes others = flash();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(others, kAddress, image_));
  EXPECT_EQ(OnlyJournal().camera, "");
}

TEST_F(FlashJournalTest, SiblingWithTheSameBytesBesideLeavesTheJournalForTheOther) {
  CutOffAfterErasing();
  const Bytes cut_off = flash();
  flash() = before_;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  flash() = cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, SectorThatNoCutLeavesBehindIsAsked) {
  CutOffAfterErasing();
  std::fill_n(flash().begin() + 0x1000, 0x1000, std::uint8_t{0});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("the sector 0x1000-0x1fff holds neither what was there before nor "
                                 "what was being written"),
            std::string::npos)
      << outcome.message;
  command_.journal = Journals().at(0);
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
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
  EXPECT_EQ(Journals().size(), 1U);
  common.cameras = {"0"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
}

// Both were cut off in the same sector, one after the other at the same port.
TEST_F(FlashJournalTest, NoneForAnotherCamerasJournalLeavesItsOwnInForce) {
  CutOffAfterErasing();
  const Bytes cut_off = flash();
  const Bytes others = Pattern(64 * 1024, 5);
  flash() = others;
  // More transfers than before: the other's landmarks are compared.
  FailFrom(kBefore + 9 + kSectorTransfers + 2);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  const Bytes others_cut_off = flash();
  ASSERT_EQ(Bytes(others_cut_off.begin() + 0x1000, others_cut_off.begin() + 0x1F00),
            Bytes(0xF00, 0xFF));
  ASSERT_EQ(Journals().size(), 2U);
  flash() = cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kFile);
  command_.journal = "none";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
  EXPECT_EQ(Journals().size(), 1U);
  command_.journal.clear();
  flash() = others_cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(others, kAddress, image_));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, JournalOfACameraThatAnotherProcessWorksWithIsLeftAlone) {
  CutOffAfterErasing();
  host.busy_elsewhere.insert(chip().identity.path);
  chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  Run(command_);
  EXPECT_FALSE(Journals().empty());
}

TEST_F(FlashJournalTest, JournalThatIsNamedMustBeOne) {
  command_.journal = WriteFile("a/some.journal", Bytes{'{', '}'});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(flash(), before_);
}

TEST_F(FlashJournalTest, FileThatIsNoJournalIsRefused) {
  CutOffAfterErasing();
  const std::string journal = Journals().at(0);
  const std::string name = journal.substr(File("").size());
  const Bytes whole = ReadFile(name);
  const Bytes state = flash();
  for (const Bytes& bytes : {Bytes{'{', '}'}, Bytes{}, Bytes(whole.begin(), whole.end() - 100)}) {
    WriteFile(name, bytes);
    const Outcome outcome = Run(command_);
    EXPECT_EQ(outcome.code, ExitCode::kFile);
    EXPECT_NE(outcome.message.find("it is no journal"), std::string::npos) << outcome.message;
    EXPECT_EQ(flash(), state);
  }
}

// ---- What must not be written -------------------------------------------------------------------

TEST_F(FlashJournalTest, NothingIsWrittenBackBesideACallThatHangs) {
  command_.backup = true;
  command_.restore_on_failure = true;
  FailAt(kBefore + 10, ExitCode::kTimeout);
  const std::uint64_t first = chip().transfers;
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kTimeout);
  EXPECT_NE(
      outcome.message.find("the old bytes are not written back, since the camera may still be "
                           "at work"),
      std::string::npos)
      << outcome.message;
  EXPECT_EQ(chip().transfers - first, kBefore + 10);
  EXPECT_NE(outcome.hint.find("To go back: "), std::string::npos);
}

TEST_F(FlashJournalTest, SharedSectorThatComesOutWrongIsReadBackBeforeAnythingElseIsTouched) {
  chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x1010 && 0x1010 < address + bytes.size()) {
      bytes[0x1010 - address] = 0;
    }
  };
  EXPECT_EQ(Run(command_).code, ExitCode::kVerify);
  EXPECT_EQ(chip().erased_sectors, (std::vector<std::uint32_t>{0x2000, 0x1000, 0x1000}));
  Heal();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(flash(), Wanted());
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
  EXPECT_EQ(flash(), Overlaid(before_, 0x1000, Bytes(0x3000, 0xFF)));
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
  const Bytes state = flash();
  FlashWordCommand word;
  word.address = 0x1010;
  word.value = 0;
  word.yes = true;
  word.backup = false;
  const Outcome outcome = Run(word);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_EQ(outcome.hint, "Repeat that command first.");
  EXPECT_EQ(flash(), state);
}

}  // namespace
}  // namespace borvanusb::tool_test
