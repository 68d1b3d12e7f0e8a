// The lock that the channel takes for a few instructions.

#include "base/short_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

TEST(ShortLockTest, WhoeverComesSecondWaitsUntilTheFirstLetsGo) {
  borvan::ShortLock lock;
  std::atomic<bool> tried = false;
  std::atomic<bool> held = false;
  lock.lock();
  std::thread second([&] {
    tried = true;
    lock.lock();
    held = true;
    lock.unlock();
  });
  while (!tried) {
    std::this_thread::yield();
  }
  // Time enough for a lock that does not hold to be taken.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(held);
  lock.unlock();
  second.join();
  EXPECT_TRUE(held);
}

}  // namespace
