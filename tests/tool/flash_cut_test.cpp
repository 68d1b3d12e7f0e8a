// An interruption at any transfer: a simple second run must finish the work, and the bytes beside
// the image must be unchanged.
#include "flash_cut_support.h"

namespace borvanusb::tool_test {
namespace {

class FlashCutTest : public FlashCutFixture {
 protected:
  FlashCutTest() { Prepare(Pattern(0x1500, 2), 0x1F00); }

  void Prepare(const Bytes& image, std::uint32_t address) {
    Measure(WriteFile("image.bin", image), address, {{address, image}});
  }
};

TEST_F(FlashCutTest, CutAtEachTransferIsMendedByASecondRun) {
  ExpectEveryCutIsMended(ExitCode::kDevice);
}

TEST_F(FlashCutTest, StopAtAnyTransferIsMendedByASecondRun) {
  ExpectEveryCutIsMended(ExitCode::kStopped, 7);
}

TEST_F(FlashCutTest, ImageWithinOneSectorKeepsTheBytesOnBothSides) {
  Prepare(Pattern(100, 2), 0x2F00);
  ExpectEveryCutIsMended(ExitCode::kDevice);
}

TEST_F(FlashCutTest, ImageWithBlankPartsIsMended) {
  Prepare(Overlaid(Bytes(0x1500, 0xFF), 0x700, Pattern(0x300, 2)), 0x1F00);
  ExpectEveryCutIsMended(ExitCode::kDevice, 7);
}

TEST_F(FlashCutTest, CutWithBackupsIsMendedAndTheFirstBackupStays) {
  command_.backup = true;
  command_.backup_file = File("old.bin");
  const Bytes old_bytes(before_.begin() + 0x1000, before_.begin() + 0x4000);
  for (std::uint64_t transfer = 1; transfer <= transfers_; transfer += Step(5)) {
    Flash() = before_;
    FailFrom(transfer);
    EXPECT_EQ(Run(command_).code, ExitCode::kDevice) << transfer;
    const bool begun = transfer > 201;
    if (begun) {
      EXPECT_EQ(ReadFile("old.bin"), old_bytes) << transfer;
    }
    ExpectSecondRunFinishes(std::to_string(transfer));
    EXPECT_EQ(ReadFile("old.bin"), old_bytes) << transfer;
    std::filesystem::remove(File("old.bin"));
  }
}

TEST_F(FlashCutTest, SecondRunThatIsCutTooIsMendedByAThird) {
  ExpectTwoCutsAreMended(200, 37, 41);
}

TEST_F(FlashCutTest, RestoringAfterAnyTransferGivesTheOldBytesBack) {
  ExpectEveryFailureIsRestored(3);
}

TEST_F(FlashCutTest, RestoringThatIsCutIsMendedByASecondRun) {
  command_.restore_on_failure = true;
  for (std::uint64_t transfer = 300; transfer <= transfers_; transfer += Step(31)) {
    for (const std::uint64_t further : {1U, 4U, 60U, 140U, 214U, 225U, 300U}) {
      Flash() = before_;
      const std::uint64_t first = Chip().transfers + transfer;
      Chip().before_transfer = [=](std::uint64_t number) {
        if (number == first || number >= first + further) {
          throw Failure(ExitCode::kDevice, "the camera is gone");
        }
      };
      EXPECT_EQ(Run(command_).code, ExitCode::kDevice) << transfer;
      ExpectSecondRunFinishes(std::to_string(transfer) + " and " + std::to_string(further),
                              Leftovers::kAllowed);
    }
  }
}

TEST_F(FlashCutTest, SectorsThatCameOutWrongAreMendedByASecondRun) {
  for (const std::uint32_t wrong :
       {0x1000U, 0x1EFFU, 0x1F00U, 0x2500U, 0x33FFU, 0x3400U, 0x3FFFU}) {
    Flash() = before_;
    Chip().after_programming = [wrong](std::uint32_t address, std::span<std::uint8_t> bytes) {
      if (address <= wrong && wrong < address + bytes.size()) {
        bytes[wrong - address] = 0;
      }
    };
    EXPECT_EQ(Run(command_).code, ExitCode::kVerify) << wrong;
    ExpectSecondRunFinishes(std::to_string(wrong));
  }
}

TEST_F(FlashCutTest, EraseThatSetOnlySomeBitsIsMended) {
  FailFrom(202 + 73);
  EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
  // Simulates a power failure during the erase of the first sector.
  for (std::size_t i = 0; i < 0x1000; ++i) {
    Flash()[0x1000 + i] |= static_cast<std::uint8_t>(i * 37);
  }
  ExpectSecondRunFinishes("half an erase");
}

}  // namespace
}  // namespace borvanusb::tool_test
