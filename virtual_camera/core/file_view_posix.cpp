#include <sys/mman.h>

#include <cerrno>
#include <system_error>

#include "core/file_view.h"

namespace virtual_camera {

void FileView::Map(const SharedFile& file, std::uint64_t size) {
  const auto length = static_cast<std::size_t>(size);
  void* const begin = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, file.handle_, 0);
  if (begin == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "map");
  }
  Unmap();
  bytes_ = {static_cast<std::uint8_t*>(begin), length};
}

void FileView::Unmap() noexcept {
  if (!bytes_.empty()) {
    ::munmap(bytes_.data(), bytes_.size());
    bytes_ = {};
  }
}

}  // namespace virtual_camera
