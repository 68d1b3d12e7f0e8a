#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

namespace borvan {

// An opened file could not be read or written to its end.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file of bytes, closed by its destructor. Paths are 8-bit texts in the system's ANSI code page
// and are passed to the runtime unchanged.
class File {
 public:
  // nullopt when the file can't be opened.
  static std::optional<File> OpenToRead(const std::string& path);

  // Creates the file, or empties an existing one. nullopt when that can't be done.
  static std::optional<File> OpenToWrite(const std::string& path);

  // The number of bytes of the file. Throws FileError.
  std::uint64_t Size();

  // Reads from the current position until `bytes` is full. Throws FileError if the file ends
  // earlier.
  void ReadExactly(std::span<std::uint8_t> bytes);

  // Reads at most `bytes.size()` bytes; fewer only at the end of the file. Throws FileError.
  std::size_t ReadSome(std::span<std::uint8_t> bytes);

  // Throws FileError unless every byte was written.
  void Write(std::span<const std::uint8_t> bytes);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
  };

  explicit File(std::FILE* file) : file_(file) {}
  static std::optional<File> Open(const std::string& path, const char* mode);

  std::unique_ptr<std::FILE, Closer> file_;
};

// True when `path` names anything that exists, a folder included.
bool PathExists(const std::string& path);

}  // namespace borvan
