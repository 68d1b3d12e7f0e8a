#include "files/file.h"

#include "files/file_platform.h"

namespace borvan {

std::optional<File> File::Open(const std::string& path, const char* mode) {
  // With a NUL inside, the path would silently open another file.
  if (path.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  std::FILE* const file = OpenFile(path.c_str(), mode);
  if (file == nullptr) {
    return std::nullopt;
  }
  // Unbuffered: blocks are large, and a failed write is detected at once, not when the file is
  // closed.
  static_cast<void>(std::setvbuf(file, nullptr, _IONBF, 0));
  return File(file);
}

std::optional<File> File::OpenToRead(const std::string& path) {
  return Open(path, "rb");
}

std::optional<File> File::OpenToWrite(const std::string& path) {
  return Open(path, "wb");
}

std::uint64_t File::Size() {
  const std::optional<std::uint64_t> size = FileSize(file_.get());
  if (!size.has_value()) {
    throw FileError("the size of the file can't be told");
  }
  return *size;
}

std::size_t File::ReadSome(std::span<std::uint8_t> bytes) {
  // As in Write: an empty span may have no address.
  if (bytes.empty()) {
    return 0;
  }
  const std::size_t read = std::fread(bytes.data(), 1, bytes.size(), file_.get());
  if (read < bytes.size() && std::ferror(file_.get()) != 0) {
    throw FileError("the file can't be read");
  }
  return read;
}

void File::ReadExactly(std::span<std::uint8_t> bytes) {
  if (ReadSome(bytes) != bytes.size()) {
    throw FileError("the file ended while it was read");
  }
}

void File::Write(std::span<const std::uint8_t> bytes) {
  // An empty dump has no address, and the runtime must not receive a null pointer.
  if (bytes.empty()) {
    return;
  }
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
    throw FileError("the file can't be written");
  }
}

}  // namespace borvan
