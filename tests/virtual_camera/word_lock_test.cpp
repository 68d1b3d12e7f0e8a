// The lock in shared memory: who has it, who waits, and owners that died.
#include "core/word_lock.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "core/file_view.h"
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::SharedFile;
using virtual_camera::WordLock;

// What a process has: the file, and a seat.
struct Contender {
  Contender(const std::string& path, std::uint64_t& word) : file(path), lock(file, word) {}
  SharedFile file;
  WordLock lock;
};

class WordLockTest : public testing::Test {
 protected:
  std::unique_ptr<Contender> Come() {
    return std::make_unique<Contender>(folder_.File("f"), word_);
  }

  ScratchFolder folder_;
  std::uint64_t word_ = 0;
};

TEST_F(WordLockTest, WordNamesTheOwner) {
  const auto first = Come();
  const auto second = Come();
  first->lock.Lock(word_);
  EXPECT_EQ(word_, 1U);
  WordLock::Unlock(word_);
  EXPECT_EQ(word_, 0U);
  second->lock.Lock(word_);
  EXPECT_EQ(word_, 2U);
}

TEST_F(WordLockTest, LivingOwnerIsWaitedForHoweverLongItTakes) {
  const auto owner = Come();
  const auto other = Come();
  owner->lock.Lock(word_);
  std::atomic<bool> has_it{false};
  std::thread waiting([&] {
    other->lock.Lock(word_);
    has_it = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(has_it);
  WordLock::Unlock(word_);
  waiting.join();
  EXPECT_EQ(word_, 2U);
}

TEST_F(WordLockTest, DeadOwnersLockIsTaken) {
  auto owner = Come();
  const auto other = Come();
  owner->lock.Lock(word_);
  owner.reset();  // its seat is free, as when its process died
  EXPECT_EQ(word_, 1U);
  other->lock.Lock(word_);
  EXPECT_EQ(word_, 2U);
}

TEST_F(WordLockTest, WhoeverGetsADeadOwnersSeatIsNotTakenForIt) {
  auto owner = Come();
  const auto other = Come();
  owner->lock.Lock(word_);
  owner.reset();
  const auto heir = Come();
  EXPECT_EQ(word_, 0U);
  other->lock.Lock(word_);
  EXPECT_EQ(word_, 2U);
}

TEST_F(WordLockTest, WordThatNoOwnerWroteIsTaken) {
  const auto one = Come();
  word_ = 0x7363'7274'6174'6532;
  one->lock.Lock(word_);
  EXPECT_EQ(word_, 1U);
}

TEST_F(WordLockTest, ThreadsTakeTurns) {
  std::uint64_t sum = 0;
  const auto add = [&] {
    const auto me = Come();
    for (int i = 0; i < 20'000; ++i) {
      me->lock.Lock(word_);
      ++sum;
      WordLock::Unlock(word_);
    }
  };
  std::thread first(add);
  std::thread second(add);
  std::thread third(add);
  first.join();
  second.join();
  third.join();
  EXPECT_EQ(sum, 60'000U);
}

}  // namespace
}  // namespace virtual_camera_test
