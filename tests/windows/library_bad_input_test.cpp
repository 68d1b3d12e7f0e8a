// What hosts hand over by mistake: file names, sizes, ranges.

#include <array>
#include <filesystem>
#include <fstream>

#include "rig.h"

namespace {

using test::Bytes;
using test::Failure;
using test::kDone;
using test::Pattern;
using test::ProgressBecomes;
using test::Slice;

constexpr std::uint64_t kFileError = Failure(0xE000000A);

class LibraryBadInput : public test::Rig {
 protected:
  // The six jobs on one file name; the answer of each.
  struct Answers {
    bool flash_write, flash_read, register_write, register_read, i2c_write, i2c_read;
  };
  static Answers StartAll(const char* name) {
    return {UsbFlashWriteFile(name, 0), UsbFlashQuickReadFile(name, 0, 15),
            UsbRegisterWriteFile(name), UsbRegisterReadFile(name, 0, 15),
            UsbI2CWriteFile(name, 0),   UsbI2CReadFile(0, 15, name, 0x20, 0)};
  }
  void ExpectAllRefused(const char* name) {
    const Answers answers = StartAll(name);
    EXPECT_FALSE(answers.flash_write);
    EXPECT_FALSE(answers.flash_read);
    EXPECT_FALSE(answers.register_write);
    EXPECT_FALSE(answers.register_read);
    EXPECT_FALSE(answers.i2c_write);
    EXPECT_FALSE(answers.i2c_read);
    EXPECT_EQ(GetProgressInfo(), kFileError);
  }
  void NewInstance() {
    UsbIniDevice();
    ASSERT_TRUE(UsbSelectDevice(0));
  }
};

TEST_F(LibraryBadInput, ANullFileNameIsRefused) {
  UseCamera();
  ExpectAllRefused(nullptr);
}

TEST_F(LibraryBadInput, AnEmptyFileNameIsRefused) {
  UseCamera();
  ExpectAllRefused("");
}

TEST_F(LibraryBadInput, AMissingFileIsRefusedByTheJobsThatRead) {
  UseCamera();
  const std::string missing = File("missing");
  EXPECT_FALSE(UsbFlashWriteFile(missing.c_str(), 0));
  EXPECT_EQ(GetProgressInfo(), kFileError);
  NewInstance();
  EXPECT_FALSE(UsbRegisterWriteFile(missing.c_str()));
  EXPECT_EQ(GetProgressInfo(), kFileError);
  NewInstance();
  EXPECT_FALSE(UsbI2CWriteFile(missing.c_str(), 0));
  EXPECT_EQ(GetProgressInfo(), kFileError);
  EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(LibraryBadInput, AFileInAMissingFolderFailsTheJob) {
  UseCamera();
  ASSERT_TRUE(UsbFlashQuickReadFile(File("missing\\dump").c_str(), 0, 15));
  EXPECT_TRUE(ProgressBecomes(kFileError));
}

TEST_F(LibraryBadInput, AFolderFailsTheJob) {
  UseCamera();
  const std::string folder = File("folder");
  std::filesystem::create_directory(folder);
  ASSERT_TRUE(UsbFlashWriteFile(folder.c_str(), 0));
  EXPECT_TRUE(ProgressBecomes(kFileError));
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(folder.c_str(), 0, 15));
  EXPECT_TRUE(ProgressBecomes(kFileError));
  NewInstance();
  EXPECT_FALSE(UsbRegisterWriteFile(folder.c_str())) << "a list without an entry";
  EXPECT_EQ(GetProgressInfo(), kFileError);
}

TEST_F(LibraryBadInput, AFileThatAnotherHoldsAloneFailsTheJob) {
  PresetFlash(Bytes(0x10000, 0x55));
  UseCamera();
  const std::string path = MakeFile("held", {1, 2, 3});
  const HANDLE holder =
      CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  ASSERT_TRUE(UsbFlashWriteFile(path.c_str(), 0));
  EXPECT_TRUE(ProgressBecomes(kFileError));
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(path.c_str(), 0, 15));
  EXPECT_TRUE(ProgressBecomes(kFileError));
  CloseHandle(holder);
  EXPECT_EQ(FinishedFile(path), (Bytes{1, 2, 3}));
  EXPECT_EQ(Slice(Flash(), 0, 16), Bytes(16, 0x55)) << "nothing may be erased";
}

// Under Wine the host's device that is always full stands for a full disk. The job tells of its end
// before it writes the file, and of the failure after.
TEST_F(LibraryBadInput, AFullDiskFailsADumpAfterItsEndWasReported) {
  constexpr char kFull[] = "Z:\\dev\\full";
  const HANDLE full = CreateFileA(kFull, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  if (full == INVALID_HANDLE_VALUE) {
    GTEST_SKIP() << "this system has no " << kFull;
  }
  CloseHandle(full);
  UseCamera();
  ASSERT_TRUE(UsbFlashQuickReadFile(kFull, 0, 15));
  EXPECT_TRUE(ProgressBecomes(kFileError, 2'500));
}

TEST_F(LibraryBadInput, AReadOnlyFileIsReadAndNotWritten) {
  UseCamera();
  const std::string path = MakeFile("fixed", {1, 2, 3});
  SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(UsbFlashWriteFile(path.c_str(), 0));
  EXPECT_TRUE(ProgressBecomes(kDone));
  if (test::WritesReadOnlyFiles()) {
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    GTEST_SKIP() << "this account may write read-only files, as root may under Wine";
  }
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(path.c_str(), 0, 15));
  EXPECT_TRUE(ProgressBecomes(kFileError));
  SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(FinishedFile(path), (Bytes{1, 2, 3}));
}

TEST_F(LibraryBadInput, AFileNameBeyondAsciiIsTakenInTheCodePage) {
  constexpr UINT kWesternEuropean = 1252;
  if (GetACP() != kWesternEuropean) {
    GTEST_SKIP() << "the name's bytes are those of code page 1252, this system has " << GetACP();
  }
  UseCamera();
  const std::string image = MakeFile("bild \xFC\x80.bin", {1, 2, 3, 4});
  ASSERT_TRUE(UsbFlashWriteFile(image.c_str(), 0));
  ASSERT_TRUE(ProgressBecomes(kDone));
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(File("caf\xE9.txt").c_str(), 0, 3));
  ASSERT_TRUE(ProgressBecomes(kDone));
  const Bytes dump = FinishedFile(File("caf\xE9.txt"));
  EXPECT_EQ(std::string(dump.begin(), dump.end()), "00000000h: 01 02 03 04 00 00 00 00;\r\n");
}

struct ImageSize {
  std::size_t size;
  std::size_t padded;  // to whole pieces of 60 bytes
  std::size_t erased;  // whole sectors of 4096 bytes that the image reaches into
};

TEST_F(LibraryBadInput, ImagesOfEverySizeFillUpWithZerosAndEraseWholeSectors) {
  constexpr std::size_t kFlashSize = 0x10000;
  constexpr std::uint32_t kStart = 0x1000;
  // The padding of the two images around one sector reaches into the next one, where it clears
  // bits that nobody erased.
  constexpr std::array<ImageSize, 8> kSizes = {{{0, 0, 0},
                                                {1, 60, 4096},
                                                {59, 60, 4096},
                                                {60, 60, 4096},
                                                {61, 120, 4096},
                                                {4095, 4140, 4096},
                                                {4096, 4140, 4096},
                                                {4097, 4140, 8192}}};
  for (const ImageSize& image : kSizes) {
    PresetFlash(Bytes(kFlashSize, 0x55));
    UseCamera();
    ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", Pattern(image.size)).c_str(), kStart));
    ASSERT_TRUE(ProgressBecomes(kDone)) << image.size;
    Bytes expected(kFlashSize, 0x55);
    const auto fill = [&expected](std::size_t first, std::size_t last, std::uint8_t value) {
      for (std::size_t i = kStart + first; i < kStart + last; ++i) {
        expected[i] = value;
      }
    };
    fill(0, image.erased, 0xFF);
    fill(image.size, image.padded, 0x00);
    const Bytes pattern = Pattern(image.size);
    for (std::size_t i = 0; i < image.size; ++i) {
      expected[kStart + i] = pattern[i];
    }
    EXPECT_TRUE(Flash() == expected) << image.size;
    UsbDestroyUSB();
  }
}

// Blank pieces are passed over, so that this takes 16,384 erasures and few writes.
TEST_F(LibraryBadInput, AnImageOf64MebibytesIsProgrammed) {
  constexpr std::size_t kSize = std::size_t{64} << 20U;
  test::CameraText camera;
  camera.flash_size = "64M";
  UseCamera(camera);
  Bytes image(kSize, 0xFF);
  image[0] = 0x11;
  image[kSize / 2] = 0x22;
  image[kSize - 1] = 0x33;
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", image).c_str(), 0));
  ASSERT_TRUE(ProgressBecomes(kDone, 60'000));
  const Bytes flash = Flash();
  ASSERT_EQ(flash.size(), kSize);
  EXPECT_EQ(flash[kSize / 2], 0x22);
  EXPECT_EQ(flash[kSize - 1], 0x33);
  // 64 MiB is 4 more than a multiple of 60: 56 zeros fill the last piece and wrap around in the
  // chip, to where the image began.
  EXPECT_EQ(Slice(flash, 0, 56), Bytes(56, 0x00));
  EXPECT_EQ(flash[56], 0xFF);
}

TEST_F(LibraryBadInput, DumpsAtTheEdgesOfTheAddressSpaceEnd) {
  const Bytes flash = Pattern(0x10000);
  PresetFlash(flash);
  UseCamera();
  const std::string dump = File("dump");
  ASSERT_TRUE(UsbFlashQuickReadFile(dump.c_str(), 0xFFFFFFFF, 0xFFFFFFFF));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(FinishedFile(dump), Slice(flash, 0xFFFF, 1)) << "the chip wraps at its flash's size";
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(dump.c_str(), 0xFFFFFFC0, 0xFFFFFFFF));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(FinishedFile(dump), Slice(flash, 0xFFC0, 64));
  NewInstance();
  ASSERT_TRUE(UsbFlashQuickReadFile(dump.c_str(), 0xFFFFFFFF, 0));
  ASSERT_TRUE(ProgressBecomes(Failure(0xE0000004)));
  EXPECT_EQ(FinishedFile(dump), Bytes{});
}

TEST_F(LibraryBadInput, ProgrammingAtTheLastAddressEnds) {
  PresetFlash(Bytes(0x10000, 0xFF));
  UseCamera();
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", {0x11}).c_str(), 0xFFFFFFFF));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(Slice(Flash(), 0xFFFF, 1), (Bytes{0x11}));
}

TEST_F(LibraryBadInput, AListWithoutEntriesIsAFileError) {
  UseCamera();
  const std::string list = MakeFile("list", {'/', '/', 'x', '\n', '\n', 'y', '\n'});
  EXPECT_FALSE(UsbRegisterWriteFile(list.c_str()));
  EXPECT_EQ(GetProgressInfo(), kFileError);
  NewInstance();
  EXPECT_TRUE(UsbI2CWriteFile(list.c_str(), 0)) << "this one is read by the job";
  EXPECT_TRUE(ProgressBecomes(kFileError));
}

TEST_F(LibraryBadInput, AListLineWithoutAValueIsAFileError) {
  UseCamera();
  const std::string list = MakeFile("list", {'1', ',', '\n'});
  EXPECT_FALSE(UsbRegisterWriteFile(list.c_str()));
  EXPECT_EQ(GetProgressInfo(), kFileError);
  NewInstance();
  EXPECT_TRUE(UsbI2CWriteFile(list.c_str(), 0));
  EXPECT_TRUE(ProgressBecomes(kFileError));
}

}  // namespace
