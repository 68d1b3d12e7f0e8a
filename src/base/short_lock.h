#pragma once

#include <atomic>
#include <thread>

namespace borvan {

// A lock for a few instructions that call nothing. It is taken at every transfer, and a mutex of
// the runtime costs several times as much under Windows. A waiting thread yields its processor.
// Works with std::lock_guard.
class ShortLock {
 public:
  void lock() {
    while (held_.exchange(true, std::memory_order_acquire)) {
      std::this_thread::yield();
    }
  }

  void unlock() { held_.store(false, std::memory_order_release); }

 private:
  std::atomic<bool> held_{false};
};

}  // namespace borvan
