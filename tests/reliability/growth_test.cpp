// Start, use, end, thousands of times: nothing grows but the references that are kept on purpose.

#include <gtest/gtest.h>

#include <cstdio>

#include "host.h"

namespace reliability {
namespace {

// A round's kept references: the control with its filter, and the list's moniker with its texts.
constexpr std::size_t kBlocksOfARound = 16;
constexpr std::size_t kBytesOfARound = 2'048;

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
  const std::size_t handles = Handles();
  const std::size_t threads = Threads();
  const Memory memory = HeapMemory();
  const std::int32_t controls = MemoryCameraControls();
  const std::int32_t filters = MemoryCameraFilters();

  const int rounds = Rounds(60);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    Round(library, files, round);
    ASSERT_FALSE(HasFatalFailure());
  }
  // Wine keeps one more thread from some moment on, after ten rounds as after a hundred.
  ASSERT_TRUE(ThreadsBecome(threads + 1)) << Threads() << " threads, before " << threads;
  EXPECT_EQ(Handles(), handles);
  EXPECT_EQ(MemoryCameraControls() - controls, rounds);
  EXPECT_EQ(MemoryCameraFilters() - filters, rounds);
  EXPECT_EQ(MemoryCameraReferences(), MemoryCameraControls()) << "one reference to each";
  const Memory after = HeapMemory();
  const auto count = static_cast<std::size_t>(rounds);
  RecordProperty("blocks_of_a_round", static_cast<int>((after.blocks - memory.blocks) / count));
  RecordProperty("bytes_of_a_round", static_cast<int>((after.bytes - memory.bytes) / count));
  std::printf("%d rounds: %zu blocks and %zu bytes more\n", rounds, after.blocks - memory.blocks,
              after.bytes - memory.bytes);
  EXPECT_LE(after.blocks, memory.blocks + count * kBlocksOfARound);
  EXPECT_LE(after.bytes, memory.bytes + count * kBytesOfARound);
  CoUninitialize();
}

}  // namespace
}  // namespace reliability
