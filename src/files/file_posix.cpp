#include <sys/stat.h>
#include <unistd.h>

#include "files/file.h"
#include "files/file_platform.h"

namespace borvan {

std::FILE* OpenFile(const char* path, const char* mode) {
  return std::fopen(path, mode);
}

std::optional<std::uint64_t> FileSize(std::FILE* file) {
  struct stat status = {};
  // Folders can be opened here, but not on Windows. They have no length that could be read.
  if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(status.st_size);
}

bool PathExists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

}  // namespace borvan
