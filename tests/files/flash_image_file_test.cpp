// Flash image files, and what the flash write job makes of them.

#include "files/flash_image_file.h"

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Every byte value, and no period that a block size shares.
std::string Pattern(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) {
    content[i] = static_cast<char>(i * 7 + i / 251);
  }
  return content;
}

class FlashImageFileTest : public testing::Test {
 protected:
  // The reports of a flash write job on a file.
  std::vector<Report> Write(const std::string& path) {
    ReportRecorder recorder(device);
    EXPECT_EQ(borvan::StartFlashWriteJob(device, path, "0", recorder.Callback()), 0);
    EXPECT_TRUE(recorder.JobsEnded());
    return recorder.Reports();
  }

 public:
  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
};

TEST_F(FlashImageFileTest, BytesAreReadFromFirstToLast) {
  for (const std::size_t size : {0U, 1U, 59U, 60U, 61U, 4095U, 4096U, 4097U, 100000U}) {
    const std::string content = Pattern(size);
    const auto image = borvan::ReadFlashImage(folder.Put("image.bin", content));
    ASSERT_TRUE(image.has_value()) << size;
    EXPECT_EQ(*image, Bytes(content.begin(), content.end())) << size;
  }
}

TEST_F(FlashImageFileTest, BytesThatTextFilesTreatSpeciallyAreKept) {
  const std::string content("\x1A\r\n\0\n\r\x1A\xFF", 8);
  const auto image = borvan::ReadFlashImage(folder.Put("image.txt", content));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(*image, (Bytes{0x1A, 0x0D, 0x0A, 0x00, 0x0A, 0x0D, 0x1A, 0xFF}));
}

TEST_F(FlashImageFileTest, LargeImageReachesTheDeviceWhole) {
  constexpr std::size_t kSize = 64U << 20U;
  const std::string path = folder.Put("image.bin", "\x11");
  std::filesystem::resize_file(path, kSize);
  std::size_t size = 0;
  std::uint8_t first = 0;
  std::uint8_t last = 0xEE;
  device->flash_write = [&](Bytes image, auto&&...) {
    size = image.size();
    first = image.front();
    last = image.back();
    return 0;
  };
  const auto reports = Write(path);
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports.at(0), (std::pair{0U, 100}));
  EXPECT_EQ(size, kSize);
  EXPECT_EQ(first, 0x11);
  EXPECT_EQ(last, 0x00);
}

TEST_F(FlashImageFileTest, EmptyImageReachesTheDevice) {
  bool reached = false;
  device->flash_write = [&](Bytes image, auto&&...) {
    reached = image.empty();
    return 0;
  };
  const auto reports = Write(folder.Put("image.bin", ""));
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports.at(0), (std::pair{0U, 100}));
  EXPECT_TRUE(reached);
}

TEST_F(FlashImageFileTest, NamesWithBlanksAndForeignLettersAreOpened) {
  for (const char* name : {"image with blanks.bin",
                           "\xC3\xBC"
                           "bung.bin",
                           "\xE5\x9B\xBA\xE4\xBB\xB6.bin", "no_dot"}) {
    const auto image = borvan::ReadFlashImage(folder.Put(name, "abc"));
    ASSERT_TRUE(image.has_value()) << name;
    EXPECT_EQ(*image, (Bytes{'a', 'b', 'c'})) << name;
  }
}

TEST_F(FlashImageFileTest, FileThatCannotBeOpenedIsTold) {
  EXPECT_EQ(borvan::ReadFlashImage(folder.Path("missing.bin")), std::nullopt);
  EXPECT_EQ(borvan::ReadFlashImage(folder.Path(std::string(400, 'x'))), std::nullopt);
  EXPECT_EQ(borvan::ReadFlashImage(""), std::nullopt);
}

TEST_F(FlashImageFileTest, NameWithANulInsideOpensNoOtherFile) {
  const std::string path = folder.Put("image.bin", "abc");
  EXPECT_EQ(borvan::ReadFlashImage(path + std::string("\0x", 2)), std::nullopt);
}

TEST_F(FlashImageFileTest, FolderIsAFileErrorOfTheJob) {
  bool reached = false;
  device->flash_write = [&](auto&&...) { return reached = true, 0; };
  const auto reports = Write(folder.Path(""));
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports.at(0), (std::pair{0xE000000AU, -1}));
  EXPECT_FALSE(reached);
  EXPECT_FALSE(device->Jobs().job_running);
}

}  // namespace
}  // namespace borvan_test
