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
  std::uint64_t log_number = 0;  // changes whenever the log is rewritten
  std::uint64_t log_start = 0;   // bytes from the start of the file
  std::uint64_t log_records = 0;
};

// The file starts with two head slots of 2048 bytes, followed by a log of register writes. A head
// contains the fields of the device, the position and length of the log, a sequence number and a
// checksum. A change is first appended to the log. Then the older head slot is written, its
// sequence number last. If a process is killed at any moment, the last complete head therefore
// describes a complete state.
//
// The processes share the file as mapped memory. The lock is a word after the first head. A
// transfer that needs no new log page makes no system call.
class StateFile {
 public:
  // Throws ConfigurationError if the file can't be opened or is not a state file. `starts_plugged`
  // sets whether the camera is plugged in if the file is new.
  StateFile(const std::string& path_utf8, bool starts_plugged);

  // Starts a change: takes the device's lock and reads the changes of other processes.
  void Lock();
  // Writes the changes since Lock or the previous Commit. Keeps the lock.
  void Commit();
  // Changes to State() without a Commit are discarded.
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

// Returns the state in the file `path_utf8` without changing the file, or the state of a new device
// if there is no file. Throws ConfigurationError if the file can't be read or is not a state file.
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
