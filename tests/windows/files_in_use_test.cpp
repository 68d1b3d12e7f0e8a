// Files that another program has open for a moment: the tool of the camera beside, which looks for
// journals, or a virus scanner.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>

#include "base/failure.h"
#include "base/files.h"
#include "temporary_folder.h"

namespace {

using test::TemporaryFolder;

constexpr DWORD kMoment = 200;  // milliseconds

// Opens a file as `share` says, and closes it after a moment.
class Reader {
 public:
  Reader(const std::string& file, DWORD share)
      : handle_(
            CreateFileA(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
    thread_ = std::thread([this] {
      Sleep(kMoment);
      CloseHandle(handle_);
    });
  }
  ~Reader() { thread_.join(); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

 private:
  HANDLE handle_;
  std::thread thread_;
};

class FilesInUse : public testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string file_ = folder_.File("camera.journal");
};

class ReplacedFilesInUse : public FilesInUse,
                           public testing::WithParamInterface<borvanusb::Lasting> {};

TEST_P(ReplacedFilesInUse, AFileThatIsBeingReadIsReplacedAMomentLater) {
  borvanusb::WriteWholeText(file_, "old");
  const Reader reader(file_, FILE_SHARE_READ | FILE_SHARE_WRITE);
  borvanusb::WriteWholeText(file_, "new", GetParam());
  EXPECT_EQ(borvanusb::ReadWholeText(file_), "new");
}

INSTANTIATE_TEST_SUITE_P(EachWay, ReplacedFilesInUse,
                         testing::Values(borvanusb::Lasting::kThroughProcess,
                                         borvanusb::Lasting::kThroughPowerCut));

TEST_F(FilesInUse, AFileThatIsBeingReadIsRemovedAMomentLater) {
  borvanusb::WriteWholeText(file_, "old");
  const Reader reader(file_, FILE_SHARE_READ | FILE_SHARE_WRITE);
  borvanusb::RemoveFile(file_);
  EXPECT_FALSE(borvanusb::FileExists(file_));
}

TEST_F(FilesInUse, AFileThatIsBeingWrittenIsReadAMomentLater) {
  borvanusb::WriteWholeText(file_, "old");
  const Reader reader(file_, 0);
  EXPECT_EQ(borvanusb::ReadWholeText(file_), "old");
}

TEST_F(FilesInUse, AFileThatStaysInUseIsAnErrorWithItsName) {
  borvanusb::WriteWholeText(file_, "old");
  const HANDLE handle =
      CreateFileA(file_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  try {
    borvanusb::WriteWholeText(file_, "new");
    ADD_FAILURE() << "replaced";
  } catch (const borvanusb::Failure& failure) {
    EXPECT_NE(failure.Message().find("can't write " + file_), std::string::npos)
        << failure.Message();
  }
  CloseHandle(handle);
  EXPECT_EQ(borvanusb::ReadWholeText(file_), "old");
}

}  // namespace
