// Threads that nobody waits for.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "jobs/detached_thread.h"
#include "support/scripted_platform.h"

namespace borvan_test {
namespace {

// One after the other, as jobs come: with a std::thread that is detached at once, one in a hundred
// never ran where winpthreads stands behind it.
TEST(DetachedThread, RunsEachTime) {
  constexpr int kThreads = 1'000;
  const auto ran = std::make_shared<std::atomic<int>>(0);
  for (int thread = 1; thread <= kThreads; ++thread) {
    borvan::RunDetached([ran] { ++*ran; });
    ASSERT_TRUE(WaitUntil([&] { return *ran == thread; })) << "thread " << thread;
  }
}

TEST(DetachedThread, IsAnother) {
  const auto other = std::make_shared<std::atomic<std::thread::id>>();
  borvan::RunDetached([other] { *other = std::this_thread::get_id(); });
  ASSERT_TRUE(WaitUntil([&] { return other->load() != std::thread::id(); }));
  EXPECT_NE(other->load(), std::this_thread::get_id());
}

TEST(DetachedThread, LetsGoOfWhatItRanWhenItEnds) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> watched = held;
  borvan::RunDetached([held = std::move(held)]() mutable { ++*held; });
  EXPECT_TRUE(WaitUntil([&] { return watched.expired(); }));
}

}  // namespace
}  // namespace borvan_test
