#include <windows.h>

#include <system_error>

#include "core/file_view.h"

namespace virtual_camera {

void FileView::Map(const SharedFile& file, std::uint64_t size) {
  const HANDLE section =
      ::CreateFileMappingW(file.handle_, nullptr, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                           static_cast<DWORD>(size), nullptr);
  void* begin = nullptr;
  DWORD error = ::GetLastError();
  if (section != nullptr) {
    begin = ::MapViewOfFile(section, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0,
                            static_cast<std::size_t>(size));
    error = ::GetLastError();
    ::CloseHandle(section);  // the view keeps it
  }
  if (begin == nullptr) {
    throw std::system_error(static_cast<int>(error), std::system_category(), "map");
  }
  Unmap();
  bytes_ = {static_cast<std::uint8_t*>(begin), static_cast<std::size_t>(size)};
}

void FileView::Unmap() noexcept {
  if (!bytes_.empty()) {
    ::UnmapViewOfFile(bytes_.data());
    bytes_ = {};
  }
}

}  // namespace virtual_camera
