#pragma once

// A lock in a word of shared memory. It makes no system call unless two objects compete for it.

#include <cstdint>

#include "core/shared_file.h"

namespace virtual_camera {

// The word is 0 if the lock is free. Otherwise it is the number of its owner's seat, starting at 1.
// A seat is a system lock on `file` that an object holds for its lifetime and that the system
// releases if the process dies. A waiting object can therefore detect that the owner has died,
// without process IDs, and take over the lock. This requires that the data which the lock protects
// is consistent at every moment.
class WordLock {
 public:
  // Takes a seat. Throws std::system_error if the system refuses. All users of a word must use the
  // same file, which must outlive this object.
  WordLock(SharedFile& file, std::uint64_t& word);
  ~WordLock() { file_.UnlockSeat(seat_); }
  WordLock(const WordLock&) = delete;
  WordLock& operator=(const WordLock&) = delete;

  // The address of the word may differ from call to call. Throws std::system_error if the system
  // can't determine whether the owner lives.
  void Lock(std::uint64_t& word);
  static void Unlock(std::uint64_t& word) noexcept;

 private:
  // Takes over the lock if the owner `seen` has died. Returns whether it did.
  bool TakeFromDead(std::uint64_t& word, std::uint64_t seen);

  SharedFile& file_;
  std::uint32_t seat_;
};

}  // namespace virtual_camera
