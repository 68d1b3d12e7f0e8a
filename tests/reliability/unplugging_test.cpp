// The camera falls off at each transfer of each job, and a host that calls from other threads than
// the one that started it.

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "host.h"

namespace reliability {
namespace {

struct JobCase {
  const char* name;
  Job job;
  std::uint8_t features;
  // The status when the camera is off from the n-th transfer on; the last one for all that follow.
  std::vector<std::uint32_t> statuses;
};

const JobCase kCases[] = {
    // Lengths of erases, erase, length of pieces, pieces.
    {"flash write", kFlashWrite, 0, {0xE0000001, 0xE0000001, 0xE0000007, 0xE0000003}},
    {"register write", kRegisterWrite, 0, {kUnplugged, 0xE0000007}},
    {"register read", kRegisterRead, 0, {kUnplugged}},
    {"I2C write in steps", kI2cWrite, 0, {0xE0000002, kUnplugged}},
    {"I2C read in steps", kI2cRead, 0, {kUnplugged}},
    {"I2C write in packets", kI2cWrite, 0x20, {0xE0000007, kUnplugged}},
    {"I2C read in blocks", kI2cRead, 0x20, {kUnplugged}},
};

class Unplugging : public testing::Test {
 protected:
  Unplugging() { CoInitialize(nullptr); }
  ~Unplugging() override {
    MemoryCameraPlug();
    MemoryCameraSetFeatures(0);
    CoUninitialize();
  }

  // The transfers of an undisturbed run.
  std::int64_t Count(Job job) {
    EXPECT_TRUE(Start(library_));
    const std::int64_t before = MemoryCameraTransfers();
    EXPECT_TRUE(files_.Run(library_, job, 0));
    EXPECT_TRUE(ProgressBecomes(100));
    const std::int64_t count = MemoryCameraTransfers() - before;
    library_.destroy();
    return count;
  }

  bool ProgressBecomes(std::uint64_t progress) const {
    constexpr int kLongest = 20'000;
    for (int waited = 0; waited < kLongest; ++waited) {
      if (library_.progress() == progress) {
        return true;
      }
      Sleep(1);
    }
    return false;
  }

  const JobFiles files_;
  const Library library_ = LoadBorvanUsb();
};

TEST_F(Unplugging, AtEachTransferHasTheJobsStatus) {
  for (const JobCase& row : kCases) {
    MemoryCameraSetFeatures(row.features);
    const std::int64_t transfers = Count(row.job);
    ASSERT_GE(transfers, 2) << row.name;
    for (std::int64_t at = 0; at < transfers; ++at) {
      ASSERT_TRUE(Start(library_));
      MemoryCameraUnplugAfter(at);
      const auto index = std::min(static_cast<std::size_t>(at), row.statuses.size() - 1);
      EXPECT_TRUE(files_.Run(library_, row.job, 0));
      EXPECT_TRUE(ProgressBecomes(std::uint64_t{row.statuses[index]} << 32U))
          << row.name << ", off at transfer " << at << ": " << std::hex << library_.progress();
      HideCamera();
      EXPECT_TRUE(library_.update());
      EXPECT_EQ(FindCamera(library_), -1);
      ShowCamera();
      MemoryCameraPlug();
      library_.destroy();
    }
  }
}

TEST_F(Unplugging, OfADumpIsWaitedForUntilTheCameraIsBack) {
  const std::int64_t transfers = Count(kFlashRead);
  for (std::int64_t at = 0; at < transfers; ++at) {
    ASSERT_TRUE(Start(library_));
    MemoryCameraUnplugAfter(at);
    EXPECT_TRUE(files_.Run(library_, kFlashRead, 0));
    if (at < 2) {
      const std::uint32_t status = at == 0 ? 0xE0000002 : 0xE0000007;  // the two lengths
      EXPECT_TRUE(ProgressBecomes(std::uint64_t{status} << 32U)) << "off at transfer " << at;
    } else {
      Sleep(5);
      EXPECT_EQ(library_.progress() & 0xFFFFFFFF00000000U, 0U) << "off at transfer " << at;
      MemoryCameraPlug();
      EXPECT_TRUE(ProgressBecomes(100)) << "off at transfer " << at;
    }
    MemoryCameraPlug();
    library_.destroy();
  }
}

TEST_F(Unplugging, OfTheListedCameraLetsAnEnumerationBesideJobsEndWell) {
  ASSERT_TRUE(Start(library_));
  const int rounds = Rounds(20);
  for (int round = 0; round < rounds; ++round) {
    EXPECT_TRUE(files_.Run(library_, kRegisterRead, round % 16));
    HideCamera();
    EXPECT_TRUE(library_.update());
    EXPECT_TRUE(files_.Run(library_, kI2cRead, (round + 1) % 16));
    ShowCamera();
    EXPECT_TRUE(library_.update());
    EXPECT_GE(FindCamera(library_), 0);
  }
  library_.destroy();
}

TEST_F(Unplugging, AThreadWithoutComAccessesACameraThatAnotherOpened) {
  ASSERT_TRUE(Start(library_));
  bool read = false;
  bool started = false;
  std::thread([&] {
    std::uint32_t value = 0;
    read = library_.register_read(0x10, &value, 0);
    started = files_.Run(library_, kRegisterRead, 0);
  }).join();
  EXPECT_TRUE(read);
  EXPECT_TRUE(started);
  EXPECT_TRUE(ProgressBecomes(100));
  library_.destroy();
}

}  // namespace
}  // namespace reliability
