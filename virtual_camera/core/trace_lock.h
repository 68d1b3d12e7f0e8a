#pragma once

// The lock of a trace file, which cameras of several processes may share.

#include <string>

#include "core/shared_file.h"

#ifdef _WIN32
#include <cstdint>
#include <optional>

#include "core/word_lock.h"
#endif

namespace virtual_camera {

// Natively this is the system's lock on the file, which takes less time than writing the line.
// Under Wine a file lock needs a call to the Wine server, which takes many times longer than the
// line. So on Windows the lock is a word in shared memory, named after the file. Each Windows
// session has its own word; processes of one camera also exclude each other across sessions, by the
// camera's state file.
class TraceLock {
 public:
  // Throws std::system_error when the system refuses. The file outlives this object.
  TraceLock(SharedFile& file, const std::string& path_utf8);
#ifdef _WIN32
  ~TraceLock();
#else
  ~TraceLock() = default;
#endif
  TraceLock(const TraceLock&) = delete;
  TraceLock& operator=(const TraceLock&) = delete;

  // Throws std::system_error when the system refuses.
  void Lock();
  void Unlock() noexcept;

 private:
  SharedFile& file_;
#ifdef _WIN32
  std::uint64_t* word_ = nullptr;  // null: devices have no such memory
  std::optional<WordLock> lock_;
#endif
};

// Holds a TraceLock for a scope.
class TraceGuard {
 public:
  explicit TraceGuard(TraceLock& lock) : lock_(lock) { lock_.Lock(); }
  ~TraceGuard() { lock_.Unlock(); }
  TraceGuard(const TraceGuard&) = delete;
  TraceGuard& operator=(const TraceGuard&) = delete;

 private:
  TraceLock& lock_;
};

}  // namespace virtual_camera
