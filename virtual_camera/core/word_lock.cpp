#include "core/word_lock.h"

#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>

namespace virtual_camera {
namespace {

using Word = std::atomic_ref<std::uint64_t>;
static_assert(Word::is_always_lock_free);

// How to wait for the owner. A transfer takes microseconds, so the waiting thread first polls and
// then yields its processor. An owner that needs longer is suspended, fills a file, or is dead.
constexpr unsigned kSpins = 200;
constexpr unsigned kYields = 32;
constexpr unsigned kSleepsBetweenProbes = 16;
constexpr std::chrono::microseconds kSleep{100};

std::uint32_t TakeSeat(SharedFile& file) {
  for (std::uint32_t seat = 0; seat < SharedFile::kSeats; ++seat) {
    if (file.TryLockSeat(seat)) {
      return seat;
    }
  }
  throw std::system_error(std::make_error_code(std::errc::no_lock_available), "lock");
}

}  // namespace

WordLock::WordLock(SharedFile& file, std::uint64_t& word) : file_(file), seat_(TakeSeat(file)) {
  // A dead owner with the same seat left this number. Other objects would treat this object as the
  // owner.
  std::uint64_t left = std::uint64_t{seat_} + 1;
  Word(word).compare_exchange_strong(left, 0, std::memory_order_acq_rel);
}

void WordLock::Lock(std::uint64_t& word) {
  const Word owner(word);
  for (unsigned turn = 0;; ++turn) {
    std::uint64_t seen = 0;
    if (owner.compare_exchange_strong(seen, std::uint64_t{seat_} + 1, std::memory_order_acquire,
                                      std::memory_order_relaxed)) {
      return;
    }
    if (turn < kYields) {
      for (unsigned i = 0; i < kSpins && owner.load(std::memory_order_relaxed) != 0; ++i) {
      }
      std::this_thread::yield();
      continue;
    }
    if ((turn - kYields) % kSleepsBetweenProbes == 0 && TakeFromDead(word, seen)) {
      return;
    }
    std::this_thread::sleep_for(kSleep);
  }
}

bool WordLock::TakeFromDead(std::uint64_t& word, std::uint64_t seen) {
  const Word owner(word);
  const std::uint64_t mine = std::uint64_t{seat_} + 1;
  if (seen == 0) {
    return false;
  }
  // No other seat has this number, so the word was corrupted.
  if (seen == mine || seen > SharedFile::kSeats) {
    return owner.compare_exchange_strong(seen, mine, std::memory_order_acquire);
  }
  const auto seat = static_cast<std::uint32_t>(seen - 1);
  if (!file_.TryLockSeat(seat)) {
    return false;
  }
  // While this object also has that seat, no new owner can use its number.
  const bool taken = owner.compare_exchange_strong(seen, mine, std::memory_order_acquire);
  file_.UnlockSeat(seat);
  return taken;
}

void WordLock::Unlock(std::uint64_t& word) noexcept {
  Word(word).store(0, std::memory_order_release);
}

}  // namespace virtual_camera
