#pragma once

// A file's bytes as memory that processes share. What one wrote stays when it is killed.

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

  // Shows the first `size` bytes of `file`, which has them, in place of what was shown before.
  // Throws std::system_error when the system refuses; then what was shown stays.
  void Map(const SharedFile& file, std::uint64_t size);

  std::span<std::uint8_t> Bytes() const { return bytes_; }

 private:
  void Unmap() noexcept;

  std::span<std::uint8_t> bytes_;
};

}  // namespace virtual_camera
