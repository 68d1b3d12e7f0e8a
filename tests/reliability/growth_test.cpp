// Start, use, end, thousands of times: nothing grows but the references that are kept on purpose.

#include <gtest/gtest.h>

#include <cstdio>

#include <strmif.h>

#include "device/directshow_interfaces.h"
#include "host.h"

namespace reliability {
namespace {

// A round's kept references: the control with its filter, and the list's monikers with their texts.
// By the camera in memory alone they come to seven blocks; each further camera has no more.
constexpr std::size_t kBlocksOfARound = 8;
constexpr std::size_t kBytesOfARound = 1'024;

void Round(const Library& library, const JobFiles& files, int round) {
  ASSERT_TRUE(Start(library));
  std::uint32_t value = 0;
  ASSERT_TRUE(library.register_read(0x10, &value, 0));
  ASSERT_TRUE(files.Run(library, static_cast<Job>(round % kJobs), round % 16));
  // Its clear task is over long after the instance has gone.
  constexpr int kLongest = 10'000;
  for (int waited = 0; borvan_progress_percent(library.progress()) != 100; ++waited) {
    ASSERT_LT(waited, kLongest) << "progress " << std::hex << library.progress();
    Sleep(1);
  }
  ASSERT_TRUE(library.destroy());
}

// Lists the video inputs as any program would, with every reference released.
void ListVideoInputs() {
  ICreateDevEnum* device_enumerator = nullptr;
  ASSERT_EQ(
      CoCreateInstance(borvan::kClsidSystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER,
                       borvan::kIidCreateDevEnum, reinterpret_cast<void**>(&device_enumerator)),
      S_OK);
  IEnumMoniker* category = nullptr;
  EXPECT_EQ(device_enumerator->CreateClassEnumerator(borvan::kClsidVideoInputDeviceCategory,
                                                     &category, 0),
            S_OK);
  device_enumerator->Release();
  ASSERT_NE(category, nullptr);
  IMoniker* moniker = nullptr;
  while (category->Next(1, &moniker, nullptr) == S_OK) {
    moniker->Release();
  }
  category->Release();
}

// The handles that the system itself leaves open each time the video inputs are listed: Wine 8
// forgets two registry keys of each of them, Windows none.
std::size_t HandlesOfAListing() {
  constexpr std::size_t kListings = 10;
  const std::size_t before = Handles();
  for (std::size_t listing = 0; listing < kListings; ++listing) {
    ListVideoInputs();
  }
  return (Handles() - before) / kListings;
}

TEST(Growth, IsThatOfTheKeptReferencesAlone) {
  const JobFiles files;
  const Library library = LoadBorvanUsb();
  CoInitialize(nullptr);
  // Buffers of the runtime and of COM come with the first rounds.
  for (int round = 0; round < 2 * kJobs; ++round) {
    Round(library, files, round);
    ASSERT_FALSE(HasFatalFailure());
  }
  WaitForClearTasks();
  ASSERT_TRUE(Start(library));
  const auto cameras = static_cast<std::size_t>(library.count());
  ASSERT_TRUE(library.destroy());
  const std::size_t listing_handles = HandlesOfAListing();
  const std::size_t handles = Handles();
  const std::size_t threads = Threads();
  const Memory memory = HeapMemory();
  const std::int32_t controls = MemoryCameraControls();
  const std::int32_t filters = MemoryCameraFilters();

  constexpr ULONGLONG kMinute = 60'000;
  const ULONGLONG start = GetTickCount64();
  const int rounds = Rounds(60);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    Round(library, files, round);
    ASSERT_FALSE(HasFatalFailure());
  }
  // Wine's listing starts a thread after a pause and keeps it with a handle, and on a busy machine
  // with one more: after ten rounds as after thousands.
  constexpr std::size_t kHandlesOfWine = 2;
  ASSERT_TRUE(ThreadsBecome(threads + 1)) << Threads() << " threads, before " << threads;
  const std::size_t listed = static_cast<std::size_t>(rounds) * listing_handles;
  const std::size_t grown = Handles() - handles;
  EXPECT_GE(grown, listed);
  EXPECT_LE(grown, listed + kHandlesOfWine + (GetTickCount64() - start) / kMinute);
  EXPECT_EQ(MemoryCameraControls() - controls, rounds);
  EXPECT_EQ(MemoryCameraFilters() - filters, rounds);
  EXPECT_EQ(MemoryCameraReferences(), MemoryCameraControls()) << "one reference to each";
  const Memory after = HeapMemory();
  const auto count = static_cast<std::size_t>(rounds) * cameras;
  std::printf("%d rounds: %zu blocks, %zu bytes and %zu handles more, %zu of these by listing\n",
              rounds, after.blocks - memory.blocks, after.bytes - memory.bytes, grown, listed);
  EXPECT_LE(after.blocks, memory.blocks + count * kBlocksOfARound);
  EXPECT_LE(after.bytes, memory.bytes + count * kBytesOfARound);
  CoUninitialize();
}

}  // namespace
}  // namespace reliability
