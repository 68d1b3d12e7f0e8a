#pragma once

// A file that several processes read and write at once.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace virtual_camera {

// Members throw std::system_error when the system refuses. Positions are bytes from the start. One
// thread at a time uses an object.
class SharedFile {
 public:
  // Opens `path_utf8` for reading and writing. Creates an empty file if there is none.
  explicit SharedFile(const std::string& path_utf8);
  // Opens an existing file only for reading. Returns null if the folder has no such file.
  static std::unique_ptr<SharedFile> OpenForReading(const std::string& path_utf8);
  ~SharedFile();
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;

  std::uint64_t Size() const;

  // Returns the bytes read: fewer than asked for at the end of the file.
  std::size_t ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const;

  // Grows the file if it writes past its end. After a failure, a part of the bytes may have been
  // written.
  void WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes);

  // Truncates the file to `size` bytes.
  void Truncate(std::uint64_t size);

  // Locks the whole file against other objects in this and in other processes. The system releases
  // the lock if the process dies. The lock is advisory: reads and writes do not check it. Objects
  // that only read may hold it at the same time.
  void Lock();
  void Unlock() noexcept;

  // Further advisory locks, numbered from 0 to kSeats - 1. They are exclusive, and taking one never
  // waits.
  static constexpr std::uint32_t kSeats = 65536;
  bool TryLockSeat(std::uint32_t seat);
  void UnlockSeat(std::uint32_t seat) noexcept;

 private:
  friend class FileView;
#ifdef _WIN32
  using Handle = void*;
#else
  using Handle = int;
#endif
  SharedFile(Handle handle, bool reads_only) : handle_(handle), reads_only_(reads_only) {}

  Handle handle_;
  bool reads_only_ = false;
};

// Holds the lock of a SharedFile for a scope.
class FileLock {
 public:
  explicit FileLock(SharedFile& file) : file_(file) { file_.Lock(); }
  ~FileLock() { file_.Unlock(); }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  SharedFile& file_;
};

}  // namespace virtual_camera
