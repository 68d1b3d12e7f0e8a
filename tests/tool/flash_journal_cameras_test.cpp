// Journals and cameras: the same one at another port, others at the same port, several.
#include <algorithm>
#include <memory>

#include "flash_journal_support.h"

namespace borvanusb::tool_test {
namespace {

TEST_F(FlashJournalTest, SameCameraAtAnotherPortIsKnownByItsContent) {
  CutOffAfterErasing();
  Chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

// A later change, also interrupted, overwrites a landmark of the camera.
TEST_F(FlashJournalTest, LaterCutOverALandmarkHidesNoCamera) {
  CutOffAfterErasing();
  const Bytes later = Pattern(0x300, 7);
  FailFrom(64 + 9 + 5);
  EXPECT_EQ(Run(CommandFor("b/later.bin", later, 0x5500)).code, ExitCode::kDevice);
  ASSERT_EQ(Bytes(Flash().begin() + 0x5528, Flash().begin() + 0x552C), Bytes(4, 0xFF));
  Heal();
  Chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  const Bytes wanted = Wanted();
  EXPECT_EQ(Bytes(Flash().begin() + 0x1000, Flash().begin() + 0x4000),
            Bytes(wanted.begin() + 0x1000, wanted.begin() + 0x4000));
}

TEST_F(FlashJournalTest, BlankCameraAtTheSamePlaceIsNotGivenTheOthersBytes) {
  CutOffAfterErasing();
  Flash() = Bytes(64 * kKibi, 0xFF);
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(
      outcome.message.find("it is unknown whether that was this camera: the rest of this flash "
                           "differs from that camera's; nothing in the flash was changed"),
      std::string::npos)
      << outcome.message;
  EXPECT_NE(outcome.hint.find(
                "add --journal none: the sector keeps the bytes it holds, and the journal stays"),
            std::string::npos)
      << outcome.hint;
  EXPECT_EQ(Flash(), Bytes(64 * kKibi, 0xFF));
  command_.journal = "none";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(Bytes(64 * kKibi, 0xFF), kAddress, image_));
  EXPECT_TRUE(HasJournal());
  // The camera of the interrupted run is connected again.
  command_.journal.clear();
  Flash() = Overlaid(Overlaid(before_, 0x1000, Bytes(0x1000, 0xFF)), 0x2000,
                     Bytes(image_.begin() + 0x100, image_.begin() + 0x1100));
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, OtherCameraAtTheSamePlaceKeepsItsBytesAndTheJournalStays) {
  CutOffAfterErasing();
  Flash() = Pattern(64 * kKibi, 99);
  const Bytes others = Flash();
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(others, kAddress, image_));
  EXPECT_EQ(OnlyJournal().camera, "");
}

TEST_F(FlashJournalTest, SiblingWithTheSameBytesBesideLeavesTheJournalForTheOther) {
  CutOffAfterErasing();
  const Bytes cut_off = Flash();
  Flash() = before_;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  Flash() = cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, SectorThatNoCutLeavesBehindIsAsked) {
  CutOffAfterErasing();
  std::fill_n(Flash().begin() + 0x1000, 0x1000, std::uint8_t{0});
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(
      outcome.message.find("the sector 0x1000-0x1fff contains neither the old nor the new data"),
      std::string::npos)
      << outcome.message;
  command_.journal = Journals().at(0);
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
}

TEST_F(FlashJournalTest, TwoCamerasOfOneKindHaveJournalsOfTheirOwn) {
  auto second = std::make_shared<FakeChip>();
  second->identity.path = R"(\\?\usb#vid_1234&pid_0001#b)";
  second->flash = Pattern(64 * kKibi, 5);
  host.chips.push_back(second);
  common.cameras = {"0"};
  CutOffAfterErasing();
  common.cameras = {"1"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(second->flash, Overlaid(Pattern(64 * kKibi, 5), kAddress, image_));
  EXPECT_EQ(Journals().size(), 1U);
  common.cameras = {"0"};
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
}

// Both cameras were interrupted in the same sector, one after another at the same port.
TEST_F(FlashJournalTest, NoneForAnotherCamerasJournalLeavesItsOwnInForce) {
  CutOffAfterErasing();
  const Bytes cut_off = Flash();
  const Bytes others = Pattern(64 * kKibi, 5);
  Flash() = others;
  // More transfers than before, because the landmarks of the other camera are compared.
  FailFrom(kBefore + 9 + kSectorTransfers + 2);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  Heal();
  const Bytes others_cut_off = Flash();
  ASSERT_EQ(Bytes(others_cut_off.begin() + 0x1000, others_cut_off.begin() + 0x1F00),
            Bytes(0xF00, 0xFF));
  ASSERT_EQ(Journals().size(), 2U);
  Flash() = cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kFile);
  command_.journal = "none";
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(Journals().size(), 1U);
  command_.journal.clear();
  Flash() = others_cut_off;
  EXPECT_EQ(Run(command_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(others, kAddress, image_));
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashJournalTest, JournalOfACameraThatAnotherProcessWorksWithIsLeftAlone) {
  CutOffAfterErasing();
  host.busy_elsewhere.insert(Chip().identity.path);
  Chip().identity.path = R"(\\?\usb#vid_1234&pid_0001#elsewhere)";
  Run(command_);
  EXPECT_FALSE(Journals().empty());
}

}  // namespace
}  // namespace borvanusb::tool_test
