// The files that flash program writes: the backup and the report.
#include "base/sha256.h"
#include "flash_program_support.h"

namespace borvanusb::tool_test {
namespace {

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
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashProgramTest, NothingIsTouchedWhenTheBackupCantBeWritten) {
  command_.backup_file = File("missing/old.bin");
  const Outcome outcome = Program();
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("the backup: "), std::string::npos) << outcome.message;
  EXPECT_NE(outcome.message.find("nothing in the flash was changed"), std::string::npos);
  EXPECT_EQ(Flash(), before_);
  EXPECT_FALSE(HasJournal());
}

TEST_F(FlashProgramTest, NoBackupWritesNone) {
  command_.backup = false;
  EXPECT_EQ(Program().code, ExitCode::kDone);
  EXPECT_EQ(FilesWith(".bin"), std::vector<std::string>{"image.bin"});
  EXPECT_FALSE(HasJournal());
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
  EXPECT_EQ(Chip().transfers, 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
