#pragma once

// A lock in a word of shared memory: without a system call unless two really meet.

#include <cstdint>

#include "core/shared_file.h"

namespace virtual_camera {

// The word is 0 while the lock is free, else the number of its owner's seat, from 1. A seat is a
// lock of the system on `file` that an object keeps for its life and loses only with its process.
// So whoever waits can find out that the owner died, whatever machine-wide numbers processes have,
// and takes its place. What the owner changed must be whole at every moment for that.
class WordLock {
 public:
  // Takes a seat. Throws std::system_error when the system refuses. All who use one word use one
  // file, which outlives this object.
  WordLock(SharedFile& file, std::uint64_t& word);
  ~WordLock() { file_.UnlockSeat(seat_); }
  WordLock(const WordLock&) = delete;
  WordLock& operator=(const WordLock&) = delete;

  // The word may be mapped elsewhere each time. Throws std::system_error when the system refuses
  // to say whether the owner lives.
  void Lock(std::uint64_t& word);
  static void Unlock(std::uint64_t& word) noexcept;

 private:
  // Whether the owner `seen` had died and the lock is this object's now.
  bool TakeFromDead(std::uint64_t& word, std::uint64_t seen);

  SharedFile& file_;
  std::uint32_t seat_;
};

}  // namespace virtual_camera
