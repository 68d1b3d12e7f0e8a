#include "support/memory_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/check.h"

namespace borvan_fuzz {

MemoryFile::MemoryFile()
    : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  Check(descriptor_ >= 0, "the system gives no file in memory");
}

MemoryFile::~MemoryFile() {
  close(descriptor_);
}

void MemoryFile::Put(std::span<const std::uint8_t> bytes) {
  const bool emptied = ftruncate(descriptor_, 0) == 0;
  const ssize_t written = pwrite(descriptor_, bytes.data(), bytes.size(), 0);
  Check(emptied && written == static_cast<ssize_t>(bytes.size()),
        "a file in memory can't be written");
}

std::vector<std::uint8_t> MemoryFile::Content() const {
  struct stat status = {};
  Check(fstat(descriptor_, &status) == 0, "a file in memory has no size");
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
  const ssize_t read = pread(descriptor_, bytes.data(), bytes.size(), 0);
  Check(read == static_cast<ssize_t>(bytes.size()), "a file in memory can't be read");
  return bytes;
}

std::string MemoryFile::Text() const {
  const std::vector<std::uint8_t> bytes = Content();
  return {bytes.begin(), bytes.end()};
}

}  // namespace borvan_fuzz
