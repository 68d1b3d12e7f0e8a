#pragma once

// The device's state in a file that survives its processes and is shared by them.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "core/device_state.h"
#include "core/file_view.h"
#include "core/shared_file.h"
#include "core/word_lock.h"

namespace virtual_camera {

struct StateHead {
  std::uint64_t sequence = 0;
  std::uint64_t log_number = 0;  // changes whenever the log is written anew
  std::uint64_t log_start = 0;   // bytes from the start of the file
  std::uint64_t log_records = 0;
};

// The file begins with two head slots of 2048 bytes, behind them lies a log of register writes.
// A head holds the device's fields, the place and length of the log, a sequence number and a
// checksum. A change first appends to the log and then writes the older slot, its sequence number
// last, so that whatever moment a process is killed at, the last complete head describes a complete
// state. All of it is memory that the processes share, and so is the lock, a word behind the first
// head; a transfer without a new log page makes no system call.
class StateFile {
 public:
  // Throws ConfigurationError when the file can't be opened or is none of this kind.
  // `starts_plugged` goes into a new file.
  StateFile(const std::string& path_utf8, bool starts_plugged);

  // Begins a change: takes the device's lock and reads what other processes did.
  void Lock();
  // Writes what changed since Lock or the Commit before. The lock stays.
  void Commit();
  // Without a Commit before it, changes to State() are dropped.
  void Unlock() noexcept;

  DeviceState& State() { return state_; }

 private:
  void Open(bool starts_plugged);
  void Create(bool starts_plugged);
  std::uint64_t& LockWord() const;
  void ShowUpTo(std::uint64_t size);
  void ReserveUpTo(std::uint64_t size);
  void ReadHead();
  void ReadLog();
  void WriteHead();
  void WriteLog(std::uint64_t position, std::span<const RegisterStore::Record> records);
  void RewriteLog();

  std::string path_;
  SharedFile file_;
  FileView view_;
  std::optional<WordLock> lock_;
  DeviceState state_;
  StateHead head_;
  DeviceFields committed_fields_;
  std::uint64_t cached_log_number_ = 0;
  std::uint64_t cached_log_records_ = 0;
  bool dirty_ = true;  // state_ may hold changes that were never committed
};

// The state in the file `path_utf8`, which stays as it is; that of a new device when there is no
// file yet. Throws ConfigurationError when the file can't be read or is none of this kind.
DeviceState LookAtState(const std::string& path_utf8, bool starts_plugged);

// Holds the lock of a StateFile for a scope.
class StateLock {
 public:
  explicit StateLock(StateFile& file) : file_(file) { file_.Lock(); }
  ~StateLock() { file_.Unlock(); }
  StateLock(const StateLock&) = delete;
  StateLock& operator=(const StateLock&) = delete;

 private:
  StateFile& file_;
};

}  // namespace virtual_camera
