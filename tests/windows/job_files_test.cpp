// All six jobs on files that Windows refuses or knows otherwise. After each the report is right and
// no file stays open.

#include <windows.h>

#include <filesystem>
#include <fstream>

#include "support/jobs_on_files.h"
#include "temporary_folder.h"

namespace borvan_test {
namespace {

class WindowsJobFiles : public JobsOnFiles {
 protected:
  std::string MakeList(const std::string& name) const {
    std::ofstream(folder_.File(name), std::ios::binary) << kListText;
    return folder_.File(name);
  }

  void ExpectOfReading(const std::string& path, const std::string& flash,
                       const std::string& registers, const std::string& i2c) {
    EXPECT_EQ(Run(FileJob::kFlashWrite, path), flash) << path;
    EXPECT_EQ(Run(FileJob::kRegisterWrite, path), registers) << path;
    EXPECT_EQ(Run(FileJob::kI2cWrite, path), i2c) << path;
  }
  void ExpectOfWriting(const std::string& path, const std::string& outcome) {
    for (const FileJob job : kWritingJobs) {
      EXPECT_EQ(Run(job, path), outcome) << path << ", job " << static_cast<int>(job);
    }
  }

  // Nobody else has the file open if it can be had alone.
  static void ExpectClosed(const std::string& path) {
    const HANDLE file =
        CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << path << " is still open";
    CloseHandle(file);
  }

  const test::TemporaryFolder folder_;
};

TEST_F(WindowsJobFiles, AreClosedAfterEachJob) {
  const std::string list = MakeList("list.txt");
  ExpectOfReading(list, kDone, kDone, kDone);
  ExpectClosed(list);
  ExpectOfWriting(folder_.File("dump.bin"), kDone);
  ExpectClosed(folder_.File("dump.bin"));
}

TEST_F(WindowsJobFiles, ThatAnotherHoldsAloneAreReported) {
  const std::string path = MakeList("held.txt");
  const HANDLE holder =
      CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  ExpectOfReading(path, kReported, kRefused, kReported);
  ExpectOfWriting(path, kReported);
  CloseHandle(holder);
  ExpectClosed(path);
  EXPECT_EQ(std::filesystem::file_size(path), 26U) << "its content is kept";
}

// Whoever shares a file for reading alone keeps others from writing it, and from nothing else.
TEST_F(WindowsJobFiles, ThatAnotherSharesForReadingAreRead) {
  const std::string path = MakeList("shared.txt");
  const HANDLE holder =
      CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  ExpectOfReading(path, kDone, kDone, kDone);
  ExpectOfWriting(path, kReported);
  CloseHandle(holder);
}

TEST_F(WindowsJobFiles, AreNoFolders) {
  const std::string path = folder_.Path().string();
  ExpectOfReading(path, kReported, kRefused, kReported);
  ExpectOfWriting(path, kReported);
}

TEST_F(WindowsJobFiles, AreNotFoundInARemovedFolder) {
  const std::string path = folder_.File("gone\\file.txt");
  ExpectOfReading(path, kRefused, kRefused, kRefused);
  ExpectOfWriting(path, kReported);
}

TEST_F(WindowsJobFiles, HavePathsOfLessThan260Characters) {
  const std::string path = folder_.File(std::string(300, 'n'));
  ExpectOfReading(path, kRefused, kRefused, kRefused);
  ExpectOfWriting(path, kReported);
}

TEST_F(WindowsJobFiles, OfTheNullDeviceTakeEverything) {
  ExpectOfWriting("NUL", kDone);
}

TEST_F(WindowsJobFiles, OfDeviceNamesEndTheirJobs) {
  // Whether a device counts as an existing file, and what it gives, is the system's affair; the
  // host must live and the job must end with one report. The console is not read: it waits.
  for (const char* const name : {"NUL", "CON"}) {
    const bool console = std::string(name) == "CON";
    for (const FileJob job : console ? kWritingJobs : kReadingJobs) {
      const std::string outcome = Run(job, name);
      EXPECT_TRUE(outcome == kRefused || outcome == kReported || outcome == kDone ||
                  outcome == kDoneThenReported)
          << name << ": " << outcome;
    }
  }
}

TEST_F(WindowsJobFiles, ThatAreReadOnlyAreReadAndNotWritten) {
  const std::string path = MakeList("fixed.txt");
  ASSERT_NE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
  ExpectOfReading(path, kDone, kDone, kDone);
  if (!test::WritesReadOnlyFiles()) {
    ExpectOfWriting(path, kReported);
    EXPECT_EQ(std::filesystem::file_size(path), 26U) << "its content is kept";
  }
  SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
}  // namespace borvan_test
