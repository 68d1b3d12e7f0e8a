// A file that several processes read and write at once.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace virtual_camera {

// Members throw std::system_error when the system refuses. Positions are bytes from the start.
class SharedFile {
 public:
  // Opens `path_utf8` for reading and writing; creates an empty file when there is none.
  explicit SharedFile(const std::string& path_utf8);
  ~SharedFile();
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;

  std::uint64_t Size() const;

  // Returns the bytes read: fewer than asked for at the end of the file.
  std::size_t ReadAt(std::uint64_t position, std::span<std::uint8_t> bytes) const;

  // Grows the file when it writes behind its end. A failure may leave a part of the bytes there.
  void WriteAt(std::uint64_t position, std::span<const std::uint8_t> bytes);

  // Drops what lies behind `size`.
  void Truncate(std::uint64_t size);

  // One lock for the whole file, against other objects in this and in other processes; the system
  // drops it when its process dies. It guards nothing by itself: reads and writes do not ask it.
  void Lock();
  void Unlock() noexcept;

 private:
#ifdef _WIN32
  void* handle_ = nullptr;
#else
  int descriptor_ = -1;
#endif
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
