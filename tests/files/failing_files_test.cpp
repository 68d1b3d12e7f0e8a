// Files that can be opened and then fail: a full disk, an unreadable file, a folder.

#include <gtest/gtest.h>
#include <unistd.h>

#include "files/file.h"
#include "files/flash_image_file.h"
#include "jobs/flash_jobs.h"
#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

// Opens for everyone who runs it and can't be read at its start: nothing is mapped at address 0.
constexpr const char* kUnreadableFile = "/proc/self/mem";
// Takes no byte: every write finds the disk full.
constexpr const char* kFullDisk = "/dev/full";

constexpr std::pair<std::uint32_t, std::int32_t> kFileError{0xE000000A, -1};

class FailingFilesTest : public testing::Test {
 protected:
  void ExpectOnlyAFileError() {
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(recorder.Reports().size(), 1U);
    EXPECT_EQ(recorder.Reports().at(0), kFileError);
    EXPECT_FALSE(device->Jobs().job_running);
    EXPECT_FALSE(device->Jobs().stop_requested);
  }

  void ExpectAFileErrorAfterTheHundred(const std::string& path) {
    device->flash_read = [](ScriptedDevice::Bytes& output, auto&&...) {
      output.assign(100, 0x5A);
      return 0;
    };
    EXPECT_EQ(borvan::StartFlashQuickReadJob(device, path, "0", "63", recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(recorder.Reports().size(), 2U);
    EXPECT_EQ(recorder.Reports().at(0), (std::pair{0U, 100}));
    EXPECT_EQ(recorder.Reports().at(1), kFileError);
    EXPECT_FALSE(device->Jobs().job_running);
  }

  // Both run reads give an entry; `path` takes none of its bytes.
  void ExpectAFileErrorAfterTheHundredOfEachListRead(const std::string& path) {
    const auto give_an_entry = [](std::vector<borvan::ListEntry>& list, auto&&...) {
      list.assign(3, {0x3012, 0x5A});
      return 0;
    };
    device->register_read = give_an_entry;
    device->i2c_read = give_an_entry;
    EXPECT_EQ(borvan::StartRegisterReadJob(device, path, "0", "0", recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    EXPECT_EQ(borvan::StartI2cReadJob(device, path, "0", "0", "0", 1, recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(recorder.Reports().size(), 4U);
    EXPECT_EQ(recorder.Reports().at(0), (std::pair{0U, 100}));
    EXPECT_EQ(recorder.Reports().at(1), kFileError);
    EXPECT_EQ(recorder.Reports().at(2), (std::pair{0U, 100}));
    EXPECT_EQ(recorder.Reports().at(3), kFileError);
    EXPECT_FALSE(device->Jobs().job_running);
  }

 public:
  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
  ReportRecorder recorder{device};
};

TEST_F(FailingFilesTest, FullDiskIsReportedAfterTheHundredOfABinaryDump) {
  ExpectAFileErrorAfterTheHundred(kFullDisk);
}

TEST_F(FailingFilesTest, FullDiskIsReportedAfterTheHundredOfATextDump) {
  std::filesystem::create_symlink(kFullDisk, folder.Path("full.txt"));
  ExpectAFileErrorAfterTheHundred(folder.Path("full.txt"));
}

TEST_F(FailingFilesTest, EmptyDumpFitsOnAFullDisk) {
  EXPECT_EQ(borvan::StartFlashQuickReadJob(device, kFullDisk, "0", "63", recorder.Callback()), 0);
  ASSERT_TRUE(recorder.JobsEnded());
  ASSERT_EQ(recorder.Reports().size(), 1U);
  EXPECT_EQ(recorder.Reports().at(0), (std::pair{0U, 100}));
}

TEST_F(FailingFilesTest, FullDiskIsReportedAfterTheHundredOfABinaryListRead) {
  ExpectAFileErrorAfterTheHundredOfEachListRead(kFullDisk);
}

TEST_F(FailingFilesTest, FullDiskIsReportedAfterTheHundredOfATextListRead) {
  std::filesystem::create_symlink(kFullDisk, folder.Path("full.txt"));
  ExpectAFileErrorAfterTheHundredOfEachListRead(folder.Path("full.txt"));
}

TEST_F(FailingFilesTest, FailedListReadFitsOnAFullDisk) {
  device->i2c_read = [](std::vector<borvan::ListEntry>& list, auto&&...) {
    list.assign(3, {0x3012, 0x5A});
    return static_cast<borvan::Result>(0xE0000006);
  };
  EXPECT_EQ(borvan::StartI2cReadJob(device, kFullDisk, "0", "0", "0", 1, recorder.Callback()), 0);
  ASSERT_TRUE(recorder.JobsEnded());
  ASSERT_EQ(recorder.Reports().size(), 1U);
  EXPECT_EQ(recorder.Reports().at(0), (std::pair{0xE0000006U, -1}));
}

TEST_F(FailingFilesTest, UnreadableRegisterListIsRefusedLikeAnEmptyOne) {
  EXPECT_EQ(borvan::StartRegisterWriteJob(device, kUnreadableFile, recorder.Callback()),
            static_cast<borvan::Result>(0xE000000A));
  ExpectOnlyAFileError();
}

TEST_F(FailingFilesTest, UnreadableI2cListIsReported) {
  EXPECT_EQ(borvan::StartI2cWriteJob(device, kUnreadableFile, 0, recorder.Callback()), 0);
  ExpectOnlyAFileError();
}

TEST_F(FailingFilesTest, FolderIsRefusedAsARegisterList) {
  EXPECT_EQ(borvan::StartRegisterWriteJob(device, folder.Path(""), recorder.Callback()),
            static_cast<borvan::Result>(0xE000000A));
  ExpectOnlyAFileError();
}

TEST_F(FailingFilesTest, FolderIsReportedAsAnI2cList) {
  EXPECT_EQ(borvan::StartI2cWriteJob(device, folder.Path(""), 0, recorder.Callback()), 0);
  ExpectOnlyAFileError();
}

TEST_F(FailingFilesTest, DeviceFileWithoutALengthIsNoImage) {
  EXPECT_EQ(borvan::StartFlashWriteJob(device, "/dev/zero", "0", recorder.Callback()), 0);
  ExpectOnlyAFileError();
}

// The starter saw the image; someone removes it before the job's thread opens it.
TEST_F(FailingFilesTest, ImageThatIsGoneWhenTheJobOpensItIsAFileError) {
  bool written = false;
  device->flash_write = [&written](auto&&...) {
    written = true;
    return 0;
  };
  {
    borvan::FlashWriteJob job{folder.Path("gone.bin"), device, recorder.Callback(), "0"};
    device->Jobs().job_running = true;
    borvan::RunFlashWriteJob(job);
  }
  ExpectOnlyAFileError();
  EXPECT_FALSE(written);
}

TEST_F(FailingFilesTest, FileThatEndsBeforeAllWasReadIsAnError) {
  auto file = borvan::File::OpenToRead(folder.Put("short.bin", "abc"));
  ASSERT_TRUE(file.has_value());
  std::vector<std::uint8_t> bytes(4);
  EXPECT_THROW(file->ReadExactly(bytes), borvan::FileError);
}

TEST_F(FailingFilesTest, ImageWithoutReadPermissionIsReported) {
  if (geteuid() == 0) {
    GTEST_SKIP() << "root may read every file";
  }
  const std::string path = folder.Put("image.bin", "abc");
  std::filesystem::permissions(path, std::filesystem::perms::none);
  EXPECT_EQ(borvan::StartFlashWriteJob(device, path, "0", recorder.Callback()), 0);
  ExpectOnlyAFileError();
}

TEST_F(FailingFilesTest, OfImagesBeyondFourGigabytesTheLow32BitsOfTheLengthCount) {
  const std::string path = folder.Put("image.bin", "abcdefgh");
  std::error_code error;
  std::filesystem::resize_file(path, (std::uintmax_t{1} << 32U) + 5, error);
  if (error) {
    GTEST_SKIP() << "no sparse files of that size here: " << error.message();
  }
  const auto image = borvan::ReadFlashImage(path);
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(*image, (std::vector<std::uint8_t>{'a', 'b', 'c', 'd', 'e'}));
}

}  // namespace
}  // namespace borvan_test
