// flash program: exactly the image's bytes change, and nothing is touched that can't be right.
#include <algorithm>

#include "base/sha256.h"
#include "flash/program.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

constexpr std::uint32_t kAddress = 0x1F00;  // within a sector
constexpr std::size_t kImageSize = 0x1500;  // ends within the third
constexpr unsigned kLandmarks = 9;          // words by which the camera is known again

class FlashProgramTest : public FlashTest {
 protected:
  FlashProgramTest() {
    flash() = Pattern(64 * 1024, 1);
    before_ = flash();
    image_ = Pattern(kImageSize, 2);
    command_.image = WriteFile("image.bin", image_);
    command_.address = kAddress;
  }

  Outcome Program() { return Run(command_); }
  Bytes Wanted() const { return Overlaid(before_, kAddress, image_); }
  // Every transfer takes 125 microseconds.
  void LetTimePass() {
    chip().before_transfer = [this](std::uint64_t) {
      host.clock += std::chrono::microseconds(125);
    };
  }
  void UseImage(const Bytes& bytes, std::uint32_t address) {
    image_ = bytes;
    command_.image = WriteFile("image.bin", bytes);
    command_.address = address;
  }

  Bytes before_;
  Bytes image_;
  FlashProgramCommand command_;
};

TEST_F(FlashProgramTest, ChangesTheImagesBytesAndNoOther) {
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashProgramTest, ImagesOfEveryLengthLeaveTheBytesBehindThemAlone) {
  for (const std::size_t size : {1U, 4U, 59U, 60U, 61U, 4092U, 4093U, 4095U, 4096U, 4097U, 8192U}) {
    for (const std::uint32_t address : {0x2000U, 0x2001U, 0x2FFFU, 0x2FC1U}) {
      flash() = before_;
      UseImage(Pattern(size, 3), address);
      command_.backup = false;
      EXPECT_EQ(Program().code, ExitCode::kDone);
      EXPECT_EQ(flash(), Overlaid(before_, address, image_)) << size << " at " << address;
    }
  }
}

TEST_F(FlashProgramTest, BlankPartsOfAnImageAreBlankAfterwards) {
  UseImage(Overlaid(Bytes(0x3000, 0xFF), 0x1000, Pattern(0x800, 4)), 0x2000);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, 0x2000, image_));
}

TEST_F(FlashProgramTest, EqualSectorsAreNeitherErasedNorWritten) {
  UseImage(Overlaid(Bytes(before_.begin(), before_.begin() + 0x8000), 0x3000, Bytes{1, 2, 3}), 0);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(chip().erased_sectors, std::vector<std::uint32_t>{0x3000});
  EXPECT_EQ(flash(), Overlaid(before_, 0, image_));
}

TEST_F(FlashProgramTest, EqualImageCostsOneRead) {
  flash() = Wanted();
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(chip().read_bytes, 0x3000U);
  EXPECT_EQ(chip().transfers, 0x3000U / 64);
  EXPECT_EQ(chip().erases, 0U);
  EXPECT_EQ(FilesWith("backup"), std::vector<std::string>{});
  EXPECT_EQ(output->out,
            "The flash holds the image already: 0x1f00-0x33ff, 5376 bytes, compared.\n");
  EXPECT_EQ(outcome.result["changed_bytes"], 0);
  EXPECT_EQ(outcome.result["verified"], true);
}

TEST_F(FlashProgramTest, ReadsOnceBeforeAndWhatItTouchedOnceAfter) {
  EXPECT_EQ(Program().code, ExitCode::kDone);
  // The two shared sectors are read back at once, and the first of them with the whole one.
  EXPECT_EQ(chip().read_bytes, 0x3000U + 2 * 0x1000 + 0x2000);
  EXPECT_EQ(chip().erases, 3U);
  // 3 sectors are 204 packets and 12 words behind.
  EXPECT_EQ(chip().programmed_packets, 204U);
  EXPECT_EQ(chip().transfers, 192U + kLandmarks + 3 + 204 + 12 + 64 + 64 + 128);
}

TEST_F(FlashProgramTest, LargeImageTakesHardlyMoreThanThePlainJobs) {
  flash() = Pattern(1024 * 1024, 1);
  before_ = flash();
  UseImage(Pattern(256 * 1024, 2), 0x40000);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, 0x40000, image_));
  // A read, 64 erases, 4370 packets, a read.
  constexpr std::uint64_t kPlain = 4096 + 64 + 4370 + 4096;
  EXPECT_LE(chip().transfers, kPlain * 102 / 100);
}

TEST_F(FlashProgramTest, DryRunShowsThePlanAndTouchesNothing) {
  LetTimePass();
  command_.dry_run = true;
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(flash(), before_);
  EXPECT_EQ(chip().erases, 0U);
  EXPECT_EQ(FilesWith(""), std::vector<std::string>{"image.bin"});
  // To write: 2 length queries, 3 erases, 204 packets, 12 words of 2 transfers. To read
  // back, twice: 2 length queries, 192 packets of 2 transfers, a word of 3; then 2 length queries,
  // 192 packets, and a job of the last packet with its word.
  EXPECT_EQ(outcome.result["transfers"], 2 + 3 + 204 + 24 + 389 + 2 + 384 + 7);
  EXPECT_EQ(outcome.result["changed_bytes"], 0x3000);
  EXPECT_EQ(outcome.result["state"], "unchanged");
  // The camera in memory reads 12288 bytes in 192 transfers of 125 us, counted as 782.
  EXPECT_NEAR(outcome.result["expected_seconds"].get<double>(), 0.024 / 782 * 1015, 0.0001);
  EXPECT_NE(output->out.find("sectors    3, of which 3 change: 0x1000-0x3fff\n"),
            std::string::npos);
  EXPECT_NE(output->out.find("Nothing was changed.\n"), std::string::npos);
}

TEST_F(FlashProgramTest, ProgressNamesItsStages) {
  EXPECT_EQ(Program().code, ExitCode::kDone);
  ASSERT_EQ(progress->bars.size(), 3U);
  EXPECT_EQ(progress->bars[0].stage, "read");
  EXPECT_EQ(progress->bars[1].stages,
            (std::vector<std::string>{"program", "erase", "program", "erase", "program", "erase",
                                      "program"}));
  EXPECT_EQ(progress->bars[1].total, 0x3000U);
  EXPECT_EQ(progress->bars[2].stage, "verify");
  for (const auto& bar : progress->bars) {
    EXPECT_TRUE(bar.complete) << bar.stage;
    EXPECT_EQ(bar.done, bar.total) << bar.stage;
  }
}

TEST_F(FlashProgramTest, NoVerifyReadsBackNothingButTheSharedSectors) {
  command_.verify = false;
  const Outcome outcome = Program();
  EXPECT_EQ(chip().read_bytes, 0x3000U + 2 * 0x1000);
  EXPECT_TRUE(outcome.result["verified"].is_null());
  EXPECT_NE(output->out.find("not read back"), std::string::npos);
}

// ---- What can't be right ------------------------------------------------------------------------

TEST_F(FlashProgramTest, RefusesBeforeAnythingIsTouched) {
  struct Case {
    Bytes image;
    std::uint32_t address;
    std::optional<std::uint64_t> flash_size;
    ExitCode code;
    std::string part;
  };
  const std::vector<Case> cases = {
      {{}, 0, {}, ExitCode::kFile, "is empty"},
      {Bytes(100, 0xFF), 0, {}, ExitCode::kFile, "nothing but 0xff bytes"},
      {Bytes(100, 0x00), 0, {}, ExitCode::kFile, "nothing but 0x00 bytes"},
      {Pattern(100, 1), 0xFFFFFFFF, {}, ExitCode::kFile, "beyond the last address"},
      {Pattern(0x10001, 1), 0, 0x10000, ExitCode::kFile, "does not fit: it would end at 0x10000"},
      {Pattern(1, 1), 0x10000, 0x10000, ExitCode::kFile, "--address: 0x10000 lies beyond"},
      {Pattern(0x10001, 7), 0, {}, ExitCode::kFile, "wraps at 64 KiB"},
  };
  for (const Case& test : cases) {
    UseImage(test.image, test.address);
    command_.flash_size = test.flash_size;
    const Outcome outcome = Program();
    EXPECT_EQ(outcome.code, test.code) << test.part;
    EXPECT_NE(outcome.message.find(test.part), std::string::npos) << outcome.message;
    EXPECT_EQ(flash(), before_);
    EXPECT_EQ(chip().read_bytes, 0U);
  }
}

TEST_F(FlashProgramTest, MissingImageIsNamed) {
  command_.image = File("missing.bin");
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("missing.bin"), std::string::npos);
}

TEST_F(FlashProgramTest, BlankImageIsProgrammedWithForce) {
  UseImage(Bytes(0x1000, 0xFF), 0x2000);
  command_.force = true;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, 0x2000, image_));
}

TEST_F(FlashProgramTest, UnknownSizeIsNotedAndTheWrapFoundByReadingBack) {
  // The first 64 KiB are blank, so nothing shows that addresses wrap after 128 KiB.
  flash() = Bytes(128 * 1024, 0xFF);
  UseImage(Pattern(192 * 1024, 5), 0);
  const Outcome outcome = Program();
  EXPECT_NE(output->notes.find("the flash's size can't be told: the first 64 KiB are blank"),
            std::string::npos);
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
}

TEST_F(FlashProgramTest, CameraThatAnotherProcessUsesIsLeftAlone) {
  host.reserved_elsewhere = true;
  EXPECT_EQ(Program().code, ExitCode::kRefused);
  EXPECT_EQ(chip().transfers, 0U);
}

TEST_F(FlashProgramTest, BackupOrReportOverTheImageIsRefused) {
  command_.backup_file = command_.image;
  EXPECT_EQ(Program().code, ExitCode::kUsage);
  command_.backup_file.clear();
  command_.report = command_.image;
  EXPECT_EQ(Program().code, ExitCode::kUsage);
  EXPECT_EQ(ReadFile("image.bin"), image_);
}

// ---- Backup -------------------------------------------------------------------------------------

TEST_F(FlashProgramTest, BackupHoldsTheChangedSectorsWholeAndItsNameTheirAddress) {
  UseImage(Overlaid(Bytes(before_.begin(), before_.begin() + 0x8000), 0x3010, Bytes{1, 2, 3}), 0);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  const auto names = FilesWith("backup");
  ASSERT_EQ(names.size(), 1U);
  EXPECT_TRUE(names[0].starts_with("image-backup-1234-0001-")) << names[0];
  EXPECT_TRUE(names[0].ends_with("-0x00003000-20260102T030405Z.bin")) << names[0];
  EXPECT_EQ(ReadFile(names[0]), Bytes(before_.begin() + 0x3000, before_.begin() + 0x4000));
}

TEST_F(FlashProgramTest, BackupIsWrittenBackByTheSameCommand) {
  command_.backup_file = File("old.bin");
  EXPECT_EQ(Program().code, ExitCode::kDone);
  FlashProgramCommand back;
  back.image = File("old.bin");
  back.address = 0x1000;
  EXPECT_EQ(Run(back).code, ExitCode::kDone);
  EXPECT_EQ(flash(), before_);
}

TEST_F(FlashProgramTest, NothingIsTouchedWhenTheBackupCantBeWritten) {
  command_.backup_file = File("missing/old.bin");
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("the backup: "), std::string::npos) << outcome.message;
  EXPECT_NE(outcome.message.find("nothing in the flash was changed"), std::string::npos);
  EXPECT_EQ(flash(), before_);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashProgramTest, NoBackupWritesNone) {
  command_.backup = false;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(FilesWith(".bin"), std::vector<std::string>{"image.bin"});
  EXPECT_FALSE(HasJournal());
}

// ---- Reading back -------------------------------------------------------------------------------

TEST_F(FlashProgramTest, SectorThatCameOutWrongIsWrittenOnceMore) {
  bool lied = false;
  chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
    if (address <= 0x2500 && 0x2500 < address + bytes.size() && !lied) {
      lied = true;
      bytes[0x2500 - address] = 0;
    }
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(flash(), Wanted());
  EXPECT_NE(output->notes.find("1 byte differs from what was written: 0x2500; writing "
                               "0x2000-0x2fff once more"),
            std::string::npos)
      << output->notes;
  EXPECT_EQ(chip().erased_sectors, (std::vector<std::uint32_t>{0x2000, 0x1000, 0x3000, 0x2000}));
}

TEST_F(FlashProgramTest, StuckBitFailsWithItsPlace) {
  chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
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

TEST_F(FlashProgramTest, WrongByteBesideTheImageIsFoundToo) {
  chip().after_programming = [&](std::uint32_t address, std::span<std::uint8_t> bytes) {
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
  // The read, one erase, one packet.
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
  flash() = Pattern(512 * 1024, 1);
  before_ = flash();
  UseImage(Pattern(200 * 1024, 2), 0x10100);
  command_.backup = false;
  chip().before_transfer = [this](std::uint64_t) {
    if (chip().programmed_packets == 10) {
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
  EXPECT_EQ(flash(), half);
  Heal();
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(flash(), Overlaid(before_, 0x10100, image_));
}

TEST_F(FlashProgramTest, ProcessThatEndsInTheMiddleStillTellsTheState) {
  std::vector<std::string> words;
  chip().before_transfer = [&](std::uint64_t) {
    if (chip().programmed_packets == 3 && words.empty()) {
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
    EXPECT_EQ(flash(), before_) << transfer;
    EXPECT_FALSE(HasJournal()) << transfer;
    Heal();
  }
}

TEST_F(FlashProgramTest, CtrlCWithRestoreOnFailureGoesBackToo) {
  command_.restore_on_failure = true;
  chip().before_transfer = [this](std::uint64_t) {
    host.stop_requested = host.stop_requested || chip().programmed_packets == 10;
  };
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(flash(), before_);
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
  EXPECT_EQ(flash(), Wanted());
}

// ---- Report -------------------------------------------------------------------------------------

TEST_F(FlashProgramTest, ReportHoldsWhatALinesDatabaseWants) {
  LetTimePass();
  command_.report = File("report.json");
  command_.backup_file = File("old.bin");
  const Outcome outcome = Program();
  const auto report = nlohmann::ordered_json::parse(ReadFile("report.json"));
  EXPECT_EQ(report, outcome.result);
  EXPECT_EQ(report["camera"].dump(),
            R"({"index":0,"path":"\\\\?\\usb#vid_1234&pid_0001#a","name":"Fake camera",)"
            R"("vid":"1234","pid":"0001"})");
  EXPECT_EQ(report["image"]["file"], command_.image);
  EXPECT_EQ(report["image"]["size"], 0x1500);
  EXPECT_EQ(report["image"]["sha256"], Sha256(image_));
  EXPECT_EQ(report["address"], 0x1F00);
  EXPECT_EQ(report["changed"].dump(), R"([{"first":4096,"last":16383}])");
  EXPECT_EQ(report["backup"], command_.backup_file);
  EXPECT_EQ(report["started"], "2026-01-02T03:04:05Z");
  EXPECT_EQ(report["result"], "done");
  EXPECT_EQ(report["state"], "done");
  EXPECT_EQ(report["verified"], true);
  EXPECT_NEAR(report["seconds"]["read"].get<double>(), 192 * 0.000125, 1e-9);
  EXPECT_NEAR(report["seconds"]["program"].get<double>(), (219 + 128) * 0.000125, 1e-9);
}

TEST_F(FlashProgramTest, ReportIsWrittenForAnImageThatIsRefusedToo) {
  UseImage(Bytes(10, 0xFF), 0);
  command_.report = File("report.json");
  EXPECT_EQ(Program().code, ExitCode::kFile);
  const auto report = nlohmann::json::parse(ReadFile("report.json"));
  EXPECT_EQ(report["result"], "file");
  EXPECT_TRUE(report["camera"].is_null());
}

TEST_F(FlashProgramTest, ReportThatCantBeWrittenIsToldFirst) {
  command_.report = File("missing/report.json");
  EXPECT_EQ(Program().code, ExitCode::kFile);
  EXPECT_EQ(chip().transfers, 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
