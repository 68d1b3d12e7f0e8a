#include <windows.h>

#include <shlwapi.h>

#include "files/file.h"
#include "files/file_platform.h"

namespace borvan {

std::FILE* OpenFile(const char* path, const char* mode) {
#if defined(_MSC_VER)
#pragma warning(suppress : 4996)  // fopen_s would open without sharing
#endif
  return std::fopen(path, mode);
}

std::optional<std::uint64_t> FileSize(std::FILE* file) {
  if (_fseeki64(file, 0, SEEK_END) != 0) {
    return std::nullopt;
  }
  const std::int64_t size = _ftelli64(file);
  if (size < 0 || _fseeki64(file, 0, SEEK_SET) != 0) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(size);
}

bool PathExists(const std::string& path) {
  return PathFileExistsA(path.c_str()) != FALSE;
}

}  // namespace borvan
