// Programming and dumping flash through the exports, and the progress that hosts poll.

#include <chrono>
#include <thread>

#include "rig.h"

namespace {

using test::Bytes;
using test::kDone;
using test::Pattern;
using test::ProgressBecomes;
using test::Slice;

std::string TextOf(const Bytes& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

class LibraryJobs : public test::Rig {};

TEST_F(LibraryJobs, AnImageThatIsProgrammedIsDumpedByteForByte) {
  PresetFlash(Bytes(0x10000, 0x55));
  UseCamera();
  const Bytes image = Pattern(10'000);
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", image).c_str(), 0x2000));
  ASSERT_TRUE(ProgressBecomes(kDone));

  const Bytes flash = Flash();
  EXPECT_EQ(Slice(flash, 0, 0x2000), Bytes(0x2000, 0x55)) << "the sectors before";
  EXPECT_EQ(Slice(flash, 0x2000, 10'000), image);
  // 10,000 is 40 more than a multiple of 60: 20 zeros fill the last piece.
  EXPECT_EQ(Slice(flash, 0x2000 + 10'000, 20), Bytes(20, 0x00));
  EXPECT_EQ(Slice(flash, 0x2000 + 10'020, 0x5000 - 0x2000 - 10'020),
            Bytes(0x5000 - 0x2000 - 10'020, 0xFF))
      << "the rest of the third sector is erased";
  EXPECT_EQ(Slice(flash, 0x5000, 0x1000), Bytes(0x1000, 0x55)) << "the sector behind";

  ASSERT_TRUE(UsbFlashQuickReadFile(File("dump.bin").c_str(), 0x2000, 0x2000 + 9'999));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(FinishedFile(File("dump.bin")), image);
}

TEST_F(LibraryJobs, AFinishedOnesProgressStaysForThreeSeconds) {
  UseCamera();
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", {1}).c_str(), 0));
  ASSERT_TRUE(ProgressBecomes(kDone));
  std::this_thread::sleep_for(std::chrono::milliseconds(2'500));
  EXPECT_EQ(GetProgressInfo(), kDone);
  std::this_thread::sleep_for(std::chrono::milliseconds(1'500));
  EXPECT_EQ(GetProgressInfo(), 0U);
}

TEST_F(LibraryJobs, ProgressOfProgrammingRisesToAHundred) {
  UseCamera(R"(, "faults": [{"selector": 4, "direction": "set", "every": 20, "delay_ms": 20}])");
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", Pattern(0x4000)).c_str(), 0));
  std::uint64_t last = 0;
  int steps = 0;
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (last != kDone && std::chrono::steady_clock::now() < limit) {
    const std::uint64_t progress = GetProgressInfo();
    ASSERT_GE(progress, last);
    ASSERT_LE(progress, kDone);
    steps += progress > last ? 1 : 0;
    last = progress;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(last, kDone);
  EXPECT_GE(steps, 5) << "intermediate percentages must be seen";
}

TEST_F(LibraryJobs, ATextDumpHasLinesOfEightBytesWithTheirAddresses) {
  PresetFlash(Bytes(0x10000, 0xFF));
  UseCamera();
  UsbFlashWrite(0x1000, 0x00010203);
  UsbFlashWrite(0x1004, 0x04050607);
  UsbFlashWrite(0x1008, 0xA0B0C0D0);
  ASSERT_TRUE(UsbFlashQuickReadFile(File("dump.txt").c_str(), 0x1000, 0x100F));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(TextOf(FinishedFile(File("dump.txt"))),
            "00001000h: 00 01 02 03 04 05 06 07;\r\n"
            "00001008h: a0 b0 c0 d0 ff ff ff ff;\r\n");
}

TEST_F(LibraryJobs, ATextDumpsLastLineShowsZerosForWhatIsMissing) {
  UseCamera();
  UsbFlashWrite(0x1008, 0xA0B0C0D0);
  ASSERT_TRUE(UsbFlashQuickReadFile(File("dump.txt").c_str(), 0x1000, 0x1008));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(TextOf(FinishedFile(File("dump.txt"))),
            "00001000h: ff ff ff ff ff ff ff ff;\r\n"
            "00001008h: a0 00 00 00 00 00 00 00;\r\n");
}

TEST_F(LibraryJobs, OnlyASmallTxtExtensionGivesText) {
  UseCamera();
  UsbFlashWrite(0, 0x0A0D1A00);
  for (const char* const name : {"dump.TXT", "dump.bin", "dump", "dump.txt.raw"}) {
    UsbIniDevice();
    UsbSelectDevice(0);
    ASSERT_TRUE(UsbFlashQuickReadFile(File(name).c_str(), 0, 3)) << name;
    ASSERT_TRUE(ProgressBecomes(kDone)) << name;
    EXPECT_EQ(FinishedFile(File(name)), (Bytes{0x0A, 0x0D, 0x1A, 0x00})) << name;
  }
}

struct Range {
  std::uint32_t start;
  std::uint32_t end;
};

TEST_F(LibraryJobs, DumpsHoldTheRangeWithItsLastByte) {
  const Bytes flash = Pattern(0x10000);
  PresetFlash(flash);
  UseCamera();
  for (const Range range : {Range{0, 0}, Range{5, 11}, Range{0, 7}, Range{0x100, 0x13F},
                            Range{0x101, 0x141}, Range{0, 0xFFF}}) {
    UsbIniDevice();
    UsbSelectDevice(0);
    ASSERT_TRUE(UsbFlashQuickReadFile(File("dump").c_str(), range.start, range.end));
    ASSERT_TRUE(ProgressBecomes(kDone)) << range.start << " to " << range.end;
    EXPECT_EQ(FinishedFile(File("dump")), Slice(flash, range.start, range.end - range.start + 1))
        << range.start << " to " << range.end;
  }
}

// 120 bytes are 15 groups of 8; the first packet holds 8 of them. The second one's report is above
// 100, is replaced at once by the job's own, and so can't be waited for.
TEST_F(LibraryJobs, ProgressOfADumpCountsGroupsOfEightBytes) {
  UseCamera(R"(, "faults": [{"selector": 5, "direction": "set", "at": 2, "delay_ms": 300}])");
  ASSERT_TRUE(UsbFlashQuickReadFile(File("dump").c_str(), 0, 119));
  EXPECT_TRUE(ProgressBecomes(53));
  EXPECT_TRUE(ProgressBecomes(kDone));
}

TEST_F(LibraryJobs, ADumpOverwritesAnExistingFile) {
  UseCamera();
  const std::string file = MakeFile("dump", Pattern(5'000));
  ASSERT_TRUE(UsbFlashQuickReadFile(file.c_str(), 0, 1));
  ASSERT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(FinishedFile(file), (Bytes{0xFF, 0xFF}));
}

TEST_F(LibraryJobs, AnInstanceOfTheirOwnHasAProgressOfItsOwn) {
  UseCamera();
  ASSERT_FALSE(UsbFlashWriteFile("", 0));
  EXPECT_EQ(GetProgressInfo(), test::Failure(0xE000000A));
  UsbIniDevice();
  EXPECT_EQ(GetProgressInfo(), 0U);
}

TEST_F(LibraryJobs, GoOnAfterTheInstanceIsDestroyed) {
  UseCamera(R"(, "faults": [{"selector": 4, "direction": "set", "every": 10, "delay_ms": 20}])");
  const Bytes image = Pattern(6'000);
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", image).c_str(), 0));
  EXPECT_TRUE(UsbDestroyUSB());
  EXPECT_EQ(GetProgressInfo(), 0U);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (Slice(Flash(), 0, 6'000) != image && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(Slice(Flash(), 0, 6'000), image);
  EXPECT_EQ(GetProgressInfo(), 0U) << "its reports reach nobody";
}

// Dumps share a selector, so their replies mix at the device; each still ends with its own length.
TEST_F(LibraryJobs, ManyDumpsAtOnceAllEnd) {
  UseCamera();
  for (int i = 0; i < 8; ++i) {
    ASSERT_TRUE(UsbFlashQuickReadFile(File("dump" + std::to_string(i)).c_str(), 0, 1'000));
  }
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  for (int i = 0; i < 8; ++i) {
    const std::string dump = File("dump" + std::to_string(i));
    while (FinishedFile(dump).size() != 1'001 && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(FinishedFile(dump).size(), 1'001U) << i;
  }
}

// Programming and dumping use different selectors, so their transfers don't mix at the device.
TEST_F(LibraryJobs, TwoAtOnceBothFinish) {
  PresetFlash(Pattern(0x10000));
  UseCamera(R"(, "faults": [{"selector": 4, "direction": "set", "every": 10, "delay_ms": 5}])");
  const Bytes image = Pattern(6'000, 77);
  ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", image).c_str(), 0x8000));
  ASSERT_TRUE(UsbFlashQuickReadFile(File("dump").c_str(), 0, 0x3FFF));
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (Slice(Flash(), 0x8000, 6'000) != image && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(Slice(Flash(), 0x8000, 6'000), image);
  EXPECT_EQ(FinishedFile(File("dump")), Pattern(0x4000));
}

}  // namespace
