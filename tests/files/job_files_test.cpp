// All six jobs on files that a host should not name, that change while they are used, or for which
// there is no room. After each the report is right and no file stays open.

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <thread>

#include "support/jobs_on_files.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

std::size_t OpenFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

class JobFiles : public JobsOnFiles {
 protected:
  ~JobFiles() override { EXPECT_EQ(OpenFiles(), open_files_) << "a file stayed open"; }

  void ExpectOfReading(const std::string& path, const std::string& flash,
                       const std::string& registers, const std::string& i2c) {
    EXPECT_EQ(Run(FileJob::kFlashWrite, path), flash);
    EXPECT_EQ(Run(FileJob::kRegisterWrite, path), registers);
    EXPECT_EQ(Run(FileJob::kI2cWrite, path), i2c);
  }
  void ExpectOfWriting(const std::string& path, const std::string& outcome) {
    for (const FileJob job : kWritingJobs) {
      EXPECT_EQ(Run(job, path), outcome) << static_cast<int>(job);
    }
  }

  const TemporaryFolder folder_;

 private:
  const std::size_t open_files_ = OpenFiles();
};

TEST_F(JobFiles, MayBeReadOnlyToBeRead) {
  const std::string path = folder_.Put("list.txt", kListText);
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  ExpectOfReading(path, kDone, kDone, kDone);
  if (geteuid() == 0) {
    GTEST_SKIP() << "root may write every file";
  }
  ExpectOfWriting(path, kReported);
  EXPECT_EQ(folder_.Content("list.txt"), kListText);
}

TEST_F(JobFiles, AreNoFolders) {
  ExpectOfReading(folder_.Path(""), kReported, kRefused, kReported);
  ExpectOfWriting(folder_.Path(""), kReported);
}

TEST_F(JobFiles, AreNotFoundInARemovedFolder) {
  ExpectOfReading(folder_.Path("gone/file.txt"), kRefused, kRefused, kRefused);
  ExpectOfWriting(folder_.Path("gone/file.txt"), kReported);
}

TEST_F(JobFiles, HaveNamesOfAtMost255Characters) {
  const std::string path = folder_.Path(std::string(300, 'n'));
  ExpectOfReading(path, kRefused, kRefused, kRefused);
  ExpectOfWriting(path, kReported);
}

TEST_F(JobFiles, MayHavePathsOf300Characters) {
  const std::string inner = std::string(140, 'a') + "/" + std::string(140, 'b');
  std::filesystem::create_directories(folder_.Path(inner));
  const std::string name = inner + "/list.txt";
  ASSERT_GT(folder_.Path(name).size(), 300U);
  ExpectOfWriting(folder_.Path(name), kDone);
  ExpectOfReading(folder_.Put(name, kListText), kDone, kDone, kDone);
}

TEST_F(JobFiles, OfTheNullDeviceTakeEverythingAndGiveNothing) {
  ExpectOfWriting("/dev/null", kDone);
  ExpectOfReading("/dev/null", kReported, kRefused, kReported);
}

TEST_F(JobFiles, WhoseFolderGoesMeanwhileEndWell) {
  for (const FileJob job : kWritingJobs) {
    const TemporaryFolder folder;
    meanwhile = [&] { std::filesystem::remove_all(folder.Path("")); };
    EXPECT_EQ(Run(job, folder.Path("dump.bin")), kDone) << static_cast<int>(job);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("dump.bin")));
  }
}

// The system tells 4096 bytes of these and gives a few, as a file that shrank meanwhile does.
TEST_F(JobFiles, ThatEndBeforeTheirLengthAreNoImages) {
  const std::string path = "/sys/kernel/uevent_seqnum";
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || status.st_size != 4096) {
    GTEST_SKIP() << "no file that ends before its length: " << path;
  }
  EXPECT_EQ(Run(FileJob::kFlashWrite, path), kReported);
}

TEST_F(JobFiles, ThatShrinkAndGrowWhileTheyAreReadEndTheirJobEitherWay) {
  constexpr std::size_t kShort = 26;
  constexpr std::size_t kLong = 300'000;
  std::string text = kListText;
  while (text.size() < kLong) {
    text += "0x3012,0x5a,\n";
  }
  text.resize(kLong);
  const std::string path = folder_.Put("list.txt", text);
  std::atomic<bool> stop{false};
  std::thread changer([&] {
    while (!stop) {
      std::filesystem::resize_file(path, kShort);
      std::filesystem::resize_file(path, kLong);
    }
  });
  for (int round = 0; round < 50; ++round) {
    const std::string written = Run(FileJob::kFlashWrite, path);
    EXPECT_TRUE(written == kDone || written == kReported) << written;
    if (written == kDone) {
      EXPECT_TRUE(image_size == kShort || image_size == kLong) << image_size;
    }
    // A list that lost its end counts as a list of what is there, or as none.
    const std::string registers = Run(FileJob::kRegisterWrite, path);
    EXPECT_TRUE(registers == kDone || registers == kRefused) << registers;
    const std::string i2c = Run(FileJob::kI2cWrite, path);
    EXPECT_TRUE(i2c == kDone || i2c == kReported) << i2c;
  }
  stop = true;
  changer.join();
}

// A file system of 64 KiB in memory, mounted for one test.
class SmallDisk {
 public:
  explicit SmallDisk(std::string folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    mounted_ = mount("none", folder_.c_str(), "tmpfs", 0, "size=64k") == 0;
    error_ = mounted_ ? 0 : errno;
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (mounted_) {
      static_cast<void>(umount2(folder_.c_str(), MNT_DETACH));
    }
  }

  bool IsMounted() const { return mounted_; }
  std::string Error() const { return std::strerror(error_); }

 private:
  const std::string folder_;
  bool mounted_ = false;
  int error_ = 0;
};

TEST_F(JobFiles, OnAFullDiskAreReportedAfterTheHundred) {
  const SmallDisk disk(folder_.Path("disk"));
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "no disk of 64 KiB to be had: " << disk.Error();
  }
  for (const char* const name : {"disk/dump.bin", "disk/dump.txt"}) {
    for (const FileJob job : kWritingJobs) {
      delivered = 100'000;
      EXPECT_EQ(Run(job, folder_.Path(name)), kDoneThenReported)
          << name << ' ' << static_cast<int>(job);
      EXPECT_LE(std::filesystem::file_size(folder_.Path(name)), 65'536U);
      std::filesystem::remove(folder_.Path(name));
      // With room again the same job ends well.
      delivered = 100;
      EXPECT_EQ(Run(job, folder_.Path(name)), kDone) << name << ' ' << static_cast<int>(job);
      std::filesystem::remove(folder_.Path(name));
    }
  }
}

}  // namespace
}  // namespace borvan_test
