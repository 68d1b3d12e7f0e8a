#include <windows.h>

#include "flush_file.h"
#include "windows/handle.h"

void FlushFile(const std::filesystem::path& file) {
  const UniqueHandle handle(CreateFileW(file.c_str(), GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() != INVALID_HANDLE_VALUE) {
    FlushFileBuffers(handle.get());
  }
}
