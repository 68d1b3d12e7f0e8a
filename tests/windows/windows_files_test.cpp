// Files by their 8-bit names, as Windows knows them.

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "files/file.h"
#include "temporary_folder.h"

namespace {

using borvan::File;
using borvan::PathExists;
using test::TemporaryFolder;

constexpr UINT kWesternEuropeanPage = 1252;

std::string Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(WindowsFiles, ExistWhenAFileOrAFolderHasTheName) {
  const TemporaryFolder folder;
  std::ofstream(folder.File("there")) << 'x';
  EXPECT_TRUE(PathExists(folder.File("there")));
  EXPECT_TRUE(PathExists(folder.Path().string()));
  EXPECT_FALSE(PathExists(folder.File("missing")));
  EXPECT_FALSE(PathExists(""));
}

TEST(WindowsFiles, KeepEveryByteInBothDirections) {
  const TemporaryFolder folder;
  const std::string path = folder.File("bytes");
  // Line ends and the end-of-text mark, which a file opened as text would change.
  const std::array<std::uint8_t, 6> bytes = {0x0A, 0x0D, 0x0A, 0x1A, 0x00, 0xFF};
  {
    auto file = File::OpenToWrite(path);
    ASSERT_TRUE(file.has_value());
    file->Write(bytes);
  }
  EXPECT_EQ(Contents(path), std::string("\x0A\x0D\x0A\x1A\x00\xFF", 6));
  auto file = File::OpenToRead(path);
  ASSERT_TRUE(file.has_value());
  EXPECT_EQ(file->Size(), 6U);
  std::array<std::uint8_t, 6> read = {};
  file->ReadExactly(read);
  EXPECT_EQ(read, bytes);
}

// A dump that failed before its first byte handed the runtime a null pointer. The build that traps
// undefined behaviour ends here when it does so again.
TEST(WindowsFiles, MoveNoBytesWithoutANullPointer) {
  const TemporaryFolder folder;
  const std::string path = folder.File("empty");
  {
    auto file = File::OpenToWrite(path);
    ASSERT_TRUE(file.has_value());
    file->Write({});
  }
  EXPECT_EQ(Contents(path), "");
  auto file = File::OpenToRead(path);
  ASSERT_TRUE(file.has_value());
  file->ReadExactly({});
  EXPECT_EQ(file->ReadSome({}), 0U);
}

TEST(WindowsFiles, WithNamesBeyondAsciiAreThoseOfTheCodePage) {
  if (GetACP() != kWesternEuropeanPage) {
    GTEST_SKIP() << "the name's bytes are those of code page 1252, this system has " << GetACP();
  }
  const TemporaryFolder folder;
  const std::string path = folder.File("caf\xE9 \x80.bin");
  {
    auto file = File::OpenToWrite(path);
    ASSERT_TRUE(file.has_value());
    file->Write(std::vector<std::uint8_t>{'o', 'k'});
  }
  EXPECT_TRUE(PathExists(path));
  EXPECT_TRUE(File::OpenToRead(path).has_value());
  EXPECT_EQ(Contents(folder.Path() / L"caf\u00E9 \u20AC.bin"), "ok");
}

TEST(WindowsFiles, AMissingFileCannotBeRead) {
  const TemporaryFolder folder;
  EXPECT_FALSE(File::OpenToRead(folder.File("missing")).has_value());
}

TEST(WindowsFiles, AFolderCannotBeReadOrWritten) {
  const TemporaryFolder folder;
  EXPECT_FALSE(File::OpenToRead(folder.Path().string()).has_value());
  EXPECT_FALSE(File::OpenToWrite(folder.Path().string()).has_value());
}

TEST(WindowsFiles, AReadOnlyFileCanBeReadAndNotWritten) {
  const TemporaryFolder folder;
  const std::string path = folder.File("fixed");
  std::ofstream(path) << "kept";
  ASSERT_NE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
  EXPECT_TRUE(File::OpenToRead(path).has_value());
  if (test::WritesReadOnlyFiles()) {
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    GTEST_SKIP() << "this account may write read-only files, as root may under Wine";
  }
  EXPECT_FALSE(File::OpenToWrite(path).has_value());
  EXPECT_EQ(Contents(path), "kept");
  SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(WindowsFiles, AFileThatAnotherHoldsAloneCannotBeOpened) {
  const TemporaryFolder folder;
  const std::string path = folder.File("held");
  std::ofstream(path) << "kept";
  const HANDLE holder =
      CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(PathExists(path));
  EXPECT_FALSE(File::OpenToRead(path).has_value());
  EXPECT_FALSE(File::OpenToWrite(path).has_value());
  CloseHandle(holder);
  EXPECT_EQ(Contents(path), "kept");
}

TEST(WindowsFiles, AnOpenFileIsSharedWithOthers) {
  const TemporaryFolder folder;
  const std::string path = folder.File("shared");
  auto writer = File::OpenToWrite(path);
  ASSERT_TRUE(writer.has_value());
  EXPECT_TRUE(File::OpenToRead(path).has_value());
}

}  // namespace
