// flash program: only the image's bytes change, and invalid requests change nothing.
#include <chrono>
#include <optional>

#include "flash_program_support.h"

namespace borvanusb::tool_test {
namespace {

TEST_F(FlashProgramTest, ReportHasTheTagsAndWhatDidIt) {
  host.environment["COMPUTERNAME"] = "LINE-4";
  host.library_version = "0.2.0";
  command_.tags = {{"order", "4711"}, {"operator", "a=b"}};
  const Outcome outcome = Run(command_);
  EXPECT_EQ(outcome.result["tags"].dump(), R"({"order":"4711","operator":"a=b"})");
  EXPECT_EQ(outcome.result["computer"], "LINE-4");
  EXPECT_EQ(outcome.result["library_version"], "0.2.0");
  EXPECT_TRUE(outcome.result["tool_version"].is_string());
  EXPECT_EQ(outcome.result["profile"], nullptr);
}

TEST_F(FlashProgramTest, ChangesTheImagesBytesAndNoOther) {
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashProgramTest, ImagesOfEveryLengthLeaveTheBytesBehindThemAlone) {
  for (const std::size_t size : {1U, 4U, 59U, 60U, 61U, 4092U, 4093U, 4095U, 4096U, 4097U, 8192U}) {
    for (const std::uint32_t address : {0x2000U, 0x2001U, 0x2FFFU, 0x2FC1U}) {
      Flash() = before_;
      UseImage(Pattern(size, 3), address);
      command_.backup = false;
      EXPECT_EQ(Program().code, ExitCode::kDone);
      EXPECT_EQ(Flash(), Overlaid(before_, address, image_)) << size << " at " << address;
    }
  }
}

TEST_F(FlashProgramTest, BlankPartsOfAnImageAreBlankAfterwards) {
  UseImage(Overlaid(Bytes(0x3000, 0xFF), 0x1000, Pattern(0x800, 4)), 0x2000);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x2000, image_));
}

TEST_F(FlashProgramTest, EqualSectorsAreNeitherErasedNorWritten) {
  UseImage(Overlaid(Bytes(before_.begin(), before_.begin() + 0x8000), 0x3000, Bytes{1, 2, 3}), 0);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Chip().erased_sectors, std::vector<std::uint32_t>{0x3000});
  EXPECT_EQ(Flash(), Overlaid(before_, 0, image_));
}

TEST_F(FlashProgramTest, EqualImageCostsOneRead) {
  Flash() = Wanted();
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(Chip().read_bytes, 0x3000U);
  EXPECT_EQ(Chip().transfers, 0x3000U / 64);
  EXPECT_EQ(Chip().erases, 0U);
  EXPECT_EQ(FilesWith("backup"), std::vector<std::string>{});
  EXPECT_EQ(output->out,
            "The flash holds the image already: 0x1f00-0x33ff, 5376 bytes, compared.\n");
  EXPECT_EQ(outcome.result["changed_bytes"], 0);
  EXPECT_EQ(outcome.result["verified"], true);
}

TEST_F(FlashProgramTest, ReadsOnceBeforeAndWhatItTouchedOnceAfter) {
  EXPECT_EQ(Program().code, ExitCode::kDone);
  // Both shared sectors are read back immediately; the first one is read again together with the
  // whole one.
  EXPECT_EQ(Chip().read_bytes, 0x3000U + 2 * 0x1000 + 0x2000);
  EXPECT_EQ(Chip().erases, 3U);
  // 3 sectors take 204 packets and 12 words.
  EXPECT_EQ(Chip().programmed_packets, 204U);
  EXPECT_EQ(Chip().transfers, 192U + kLandmarks + 3 + 204 + 12 + 64 + 64 + 128);
}

TEST_F(FlashProgramTest, LargeImageTakesHardlyMoreThanThePlainJobs) {
  Flash() = Pattern(kMebi, 1);
  before_ = Flash();
  UseImage(Pattern(256 * kKibi, 2), 0x40000);
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x40000, image_));
  // Reading, 64 erases, 4370 packets, reading.
  constexpr std::uint64_t kPlain = 4096 + 64 + 4370 + 4096;
  EXPECT_LE(Chip().transfers, kPlain * 102 / 100);
}

TEST_F(FlashProgramTest, DryRunShowsThePlanAndTouchesNothing) {
  LetTimePass();
  command_.dry_run = true;
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(Flash(), before_);
  EXPECT_EQ(Chip().erases, 0U);
  EXPECT_EQ(FilesWith(""), std::vector<std::string>{"image.bin"});
  // Writing: 2 length queries, 3 erases, 204 packets, 12 words of 2 transfers. Reading back, first
  // time: 2 length queries, 192 packets of 2 transfers, a word of 3. Second time: 2 length queries,
  // 192 packets, and a job for the last packet with its word.
  EXPECT_EQ(outcome.result["transfers"], 2 + 3 + 204 + 24 + 389 + 2 + 384 + 7);
  EXPECT_EQ(outcome.result["changed_bytes"], 0x3000);
  EXPECT_EQ(outcome.result["state"], "unchanged");
  // The camera in memory reads 12288 bytes in 192 transfers of 125 us, which are counted as 782.
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

// Shared sectors are read back as they are written.
TEST_F(FlashProgramTest, ProgressHasNoStageWithoutBytes) {
  command_.image = WriteFile("short.bin", Pattern(16, 9));
  EXPECT_EQ(Program().code, ExitCode::kDone);
  ASSERT_EQ(progress->bars.size(), 2U);
  EXPECT_EQ(progress->bars[1].stage, "program");
}

TEST_F(FlashProgramTest, NoVerifyReadsBackNothingButTheSharedSectors) {
  command_.verify = false;
  const Outcome outcome = Program();
  EXPECT_EQ(Chip().read_bytes, 0x3000U + 2 * 0x1000);
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
    std::uint64_t read = 0;  // bytes read by jobs
  };
  const std::vector<Case> cases = {
      {{}, 0, {}, ExitCode::kFile, "is empty"},
      {Bytes(100, 0xFF), 0, {}, ExitCode::kFile, "contains only 0xff bytes"},
      {Bytes(100, 0x00), 0, {}, ExitCode::kFile, "contains only 0x00 bytes"},
      {Pattern(100, 1), 0xFFFFFFFF, {}, ExitCode::kFile, "beyond the last address"},
      {Pattern(0x10001, 1), 0, 0x10000, ExitCode::kFile, "does not fit: it would end at 0x10000"},
      {Pattern(1, 1), 0x10000, 0x10000, ExitCode::kFile, "--address: 0x10000 is beyond"},
      {Pattern(0x10001, 7), 0, {}, ExitCode::kFile, "wraps at 64 KiB", 0x10000},
  };
  for (const Case& test : cases) {
    UseImage(test.image, test.address);
    command_.flash_size = test.flash_size;
    const Outcome outcome = Program();
    EXPECT_EQ(outcome.code, test.code) << test.part;
    EXPECT_NE(outcome.message.find(test.part), std::string::npos) << outcome.message;
    EXPECT_EQ(Flash(), before_);
    EXPECT_EQ(Chip().read_bytes, test.read);
    Chip().read_bytes = 0;
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
  EXPECT_EQ(Flash(), Overlaid(before_, 0x2000, image_));
}

TEST_F(FlashProgramTest, UnknownSizeIsNotedAndTheWrapFoundByReadingBack) {
  // The first 64 KiB are blank, so wrapping at 128 KiB can't be detected.
  Flash() = Bytes(128 * kKibi, 0xFF);
  UseImage(Pattern(192 * kKibi, 5), 0);
  const Outcome outcome = Program();
  EXPECT_NE(output->notes.find("the flash's size is unknown: the first 64 KiB are blank"),
            std::string::npos);
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
}

TEST_F(FlashProgramTest, CameraThatAnotherProcessUsesIsLeftAlone) {
  host.reserved_elsewhere = true;
  EXPECT_EQ(Program().code, ExitCode::kRefused);
  EXPECT_EQ(Chip().transfers, 0U);
}

TEST_F(FlashProgramTest, BackupOrReportOverTheImageIsRefused) {
  command_.backup_file = command_.image;
  EXPECT_EQ(Program().code, ExitCode::kUsage);
  command_.backup_file.clear();
  command_.report = command_.image;
  EXPECT_EQ(Program().code, ExitCode::kUsage);
  EXPECT_EQ(ReadFile("image.bin"), image_);
}

}  // namespace
}  // namespace borvanusb::tool_test
