// flash program if bytes are written wrongly, if the camera fails, and if it is stopped.
#include <algorithm>

#include "flash_program_support.h"

namespace borvanusb::tool_test {
namespace {

// ---- Reading back -------------------------------------------------------------------------------

TEST_F(FlashProgramTest, SectorThatCameOutWrongIsWrittenOnceMore) {
  bool lied = false;
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x2500 && 0x2500 < address + bytes.size() && !lied) {
      lied = true;
      bytes[0x2500 - address] = 0;
    }
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_NE(output->notes.find("1 byte differs from what was written: 0x2500; writing "
                               "0x2000-0x2fff once more"),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(Chip().erased_sectors, (std::vector<std::uint32_t>{0x2000, 0x1000, 0x3000, 0x2000}));
}

TEST_F(FlashProgramTest, StuckBitFailsWithItsPlace) {
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x2500 && 0x2500 < address + bytes.size()) {
      bytes[0x2500 - address] = 0;
    }
  };
  command_.report = File("report.json");
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
  EXPECT_NE(
      outcome.message.find("1 byte differs from what was written, at the second try too: 0x2500; "
                           "first at 0x2500: 0x00 in place of 0x"),
      std::string::npos)
      << outcome.message;
  const auto report = nlohmann::json::parse(ReadFile("report.json"));
  EXPECT_EQ(report["wrong"].dump(), R"([{"first":9472,"last":9472}])");
  EXPECT_EQ(report["result"], "verify");
  EXPECT_EQ(report["exit_code"], 7);
  EXPECT_EQ(report["state"], "partial");
}

TEST_F(FlashProgramTest, WrongBytesAreNamedIfTheCameraGoesDuringTheSecondTry) {
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x2500 && 0x2500 < address + bytes.size()) {
      bytes[0x2500 - address] = 0;
    }
  };
  Chip().before_transfer = [this](std::uint64_t /*number*/) {
    if (Chip().erased_sectors.size() > 3) {
      throw Failure(ExitCode::kDevice, "the camera is gone");
    }
  };
  command_.report = File("report.json");
  EXPECT_EQ(Program().code, ExitCode::kDevice);
  const auto report = nlohmann::json::parse(ReadFile("report.json"));
  EXPECT_EQ(report["wrong"].dump(), R"([{"first":9472,"last":9472}])");
}

TEST_F(FlashProgramTest, WrongByteBesideTheImageIsFoundToo) {
  Chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x1010 && 0x1010 < address + bytes.size()) {
      bytes[0x1010 - address] = 0;
    }
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
  EXPECT_NE(outcome.message.find("0x1010"), std::string::npos);
}

// ---- Failures and stops -------------------------------------------------------------------------

TEST_F(FlashProgramTest, FailureTellsTheStateAndTheWaysOnAndBack) {
  command_.backup_file = File("old.bin");
  // After reading, one erase and one packet.
  FailFrom(192 + kLandmarks + 1 + 2);
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDevice);
  EXPECT_EQ(outcome.message,
            "the camera is gone; the flash is changed in part: 0x2000-0x2fff is erased or half "
            "written; 0x1000-0x1fff, 0x3000-0x3fff is as before");
  EXPECT_EQ(outcome.hint, "To continue: borvanusb flash program " + command_.image +
                              " --address 0x1f00 --backup " + command_.backup_file +
                              R"( --camera "\\?\usb#vid_1234&pid_0001#a")"
                              "\nTo go back: borvanusb flash program " +
                              command_.backup_file + " --address 0x1000" +
                              R"( --camera "\\?\usb#vid_1234&pid_0001#a")");
}

TEST_F(FlashProgramTest, FailureWhileReadingSaysThatNothingWasChanged) {
  FailFrom(10);
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.message, "the camera is gone; nothing in the flash was changed");
  EXPECT_EQ(outcome.hint, "");
}

TEST_F(FlashProgramTest, CtrlCStopsAfterTheBlock) {
  Flash() = Pattern(512 * kKibi, 1);
  before_ = Flash();
  UseImage(Pattern(200 * kKibi, 2), 0x10100);
  command_.backup = false;
  Chip().before_transfer = [this](std::uint64_t) {
    if (Chip().programmed_packets == 10) {
      host.stop_requested = true;
    }
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(outcome.message,
            "stopped by the user; the flash is changed in part: 0x11000-0x2efff is written; "
            "0x10000-0x10fff, 0x2f000-0x42fff is as before");
  Bytes half = before_;
  std::copy(image_.begin() + (0x11000 - 0x10100), image_.begin() + (0x2F000 - 0x10100),
            half.begin() + 0x11000);
  EXPECT_EQ(Flash(), half);
  Heal();
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x10100, image_));
}

TEST_F(FlashProgramTest, ProcessThatEndsInTheMiddleStillTellsTheState) {
  std::vector<std::string> words;
  Chip().before_transfer = [&](std::uint64_t) {
    if (Chip().programmed_packets == 3 && words.empty()) {
      words = host.last_words();
    }
  };
  EXPECT_EQ(Program().code, ExitCode::kDone);
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[0],
            "the flash is changed in part: 0x2000-0x2fff is erased or half written; "
            "0x1000-0x1fff, 0x3000-0x3fff is as before");
  EXPECT_TRUE(words[1].starts_with("To continue: borvanusb flash program ")) << words[1];
  EXPECT_FALSE(host.last_words);
}

TEST_F(FlashProgramTest, RestoreOnFailureWritesTheOldBytesBack) {
  command_.restore_on_failure = true;
  for (const std::uint64_t transfer : {203U, 210U, 275U, 300U, 400U, 410U, 500U, 600U}) {
    FailAt(transfer);
    const Outcome outcome = Program();
    EXPECT_EQ(outcome.code, ExitCode::kDevice) << transfer;
    EXPECT_EQ(outcome.message, "the transfer failed; the flash is restored to its old bytes")
        << transfer;
    EXPECT_EQ(outcome.hint, "");
    EXPECT_EQ(Flash(), before_) << transfer;
    EXPECT_FALSE(HasJournal()) << transfer;
    Heal();
  }
}

TEST_F(FlashProgramTest, CtrlCWithRestoreOnFailureGoesBackToo) {
  command_.restore_on_failure = true;
  Chip().before_transfer = [this](std::uint64_t) {
    host.stop_requested = host.stop_requested || Chip().programmed_packets == 10;
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashProgramTest, RestoringThatFailsTooSaysSo) {
  command_.restore_on_failure = true;
  FailFrom(300);
  const Outcome outcome = Program();
  EXPECT_NE(outcome.message.find("; writing the old bytes back failed too: the camera is gone; "),
            std::string::npos)
      << outcome.message;
  EXPECT_TRUE(HasJournal());
  Heal();
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
}

}  // namespace
}  // namespace borvanusb::tool_test
