#pragma once

// Maps a file into memory that processes share. Data that a process has written stays in the file
// if the process is killed.

#include <cstdint>
#include <span>

#include "core/shared_file.h"

namespace virtual_camera {

class FileView {
 public:
  FileView() = default;
  ~FileView() { Unmap(); }
  FileView(const FileView&) = delete;
  FileView& operator=(const FileView&) = delete;

  // Maps the first `size` bytes of `file` and replaces the previous mapping. The file must have at
  // least this size. Throws std::system_error if the system refuses; the previous mapping then
  // stays.
  void Map(const SharedFile& file, std::uint64_t size);

  std::span<std::uint8_t> Bytes() const { return bytes_; }

 private:
  void Unmap() noexcept;

  std::span<std::uint8_t> bytes_;
};

}  // namespace virtual_camera
