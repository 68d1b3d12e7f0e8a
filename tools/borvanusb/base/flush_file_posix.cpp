#include <fcntl.h>
#include <unistd.h>

#include "base/flush_file.h"

namespace borvanusb {

void FlushFile(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) {
    fsync(descriptor);
    close(descriptor);
  }
}

std::error_code ReplaceThrough(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  std::filesystem::rename(from, to, error);
  if (!error) {
    const std::filesystem::path folder = to.parent_path();
    FlushFile(folder.empty() ? std::filesystem::path(".") : folder);
  }
  return error;
}

bool IsInUse(const std::error_code& /*error*/) {
  return false;
}

bool SameName(const std::filesystem::path& left, const std::filesystem::path& right) {
  return left == right;
}

}  // namespace borvanusb
