#include <fcntl.h>
#include <unistd.h>

#include "flush_file.h"

void FlushFile(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor >= 0) {
    fsync(descriptor);
    close(descriptor);
  }
}
