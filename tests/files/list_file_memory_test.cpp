// Files much longer than what they say: reading them takes no memory to speak of.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "files/list_file.h"
#include "files/peak_memory.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Entries = std::vector<borvan::ListEntry>;

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;
constexpr std::size_t kMany = 64;
constexpr std::size_t kSome = 8;

void WriteAll(int file, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = write(file, text.data() + written, text.size() - written);
    if (count <= 0) {
      return;
    }
    written += static_cast<std::size_t>(count);
  }
}

class ListFileMemoryTest : public testing::Test {
 protected:
  ListFileMemoryTest() { std::signal(SIGPIPE, SIG_IGN); }

  // Reads `head`, so many MiB of `filler` and `tail`, which never stand on a disk, within 4 MiB.
  Entries ReadFilled(const std::string& head, char filler, const std::string& tail,
                     std::size_t mebibytes = kMany) {
    const std::string path = folder.Path("list.txt");
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] {
      const int file = open(path.c_str(), O_WRONLY);
      const std::string piece(kMebibyte, filler);
      WriteAll(file, head);
      for (std::size_t i = 0; i < mebibytes; ++i) {
        WriteAll(file, piece);
      }
      WriteAll(file, tail);
      close(file);
    });
    Entries list;
    const std::size_t grown = PeakGrowth([&] { list = borvan::ReadListFile(path); });
    writer.join();
    EXPECT_LE(grown, 4 * kMebibyte);
    EXPECT_EQ(unlink(path.c_str()), 0);
    return list;
  }

 public:
  const TemporaryFolder folder;
};

TEST_F(ListFileMemoryTest, FileOfBlanksIsAnEmptyList) {
  EXPECT_EQ(ReadFilled("", ' ', ""), Entries{});
  EXPECT_EQ(ReadFilled("", '\r', ""), Entries{});
}

TEST_F(ListFileMemoryTest, FileOfEmptyLinesIsAnEmptyList) {
  // Each is a line of its own, which takes its time: fewer will do.
  EXPECT_EQ(ReadFilled("", '\n', "", kSome), Entries{});
}

TEST_F(ListFileMemoryTest, BlanksBetweenFieldsArePassedOver) {
  EXPECT_EQ(ReadFilled("0x12", ' ', ",0x34,\n5,6\n"), (Entries{{0x12, 0x34}, {5, 6}}));
  EXPECT_EQ(ReadFilled("0x12,", '\t', "0x34\n5,6\n"), (Entries{{0x12, 0x34}, {5, 6}}));
}

TEST_F(ListFileMemoryTest, WhatStandsBehindTheSecondFieldIsNotKept) {
  EXPECT_EQ(ReadFilled("0x12,0x34,", 'x', "\n5,6\n"), (Entries{{0x12, 0x34}, {5, 6}}));
}

TEST_F(ListFileMemoryTest, RestOfAFileIsNotReadAfterControlZ) {
  EXPECT_EQ(ReadFilled("0x12,0x34\n\x1A", 'x', "\n5,6\n"), (Entries{{0x12, 0x34}}));
}

}  // namespace
}  // namespace borvan_test
