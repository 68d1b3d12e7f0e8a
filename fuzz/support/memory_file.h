#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace borvan_fuzz {

// A file in memory that can be opened by its path.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const std::string& Path() const { return path_; }

  // Replaces the whole content.
  void Put(std::span<const std::uint8_t> bytes);
  std::vector<std::uint8_t> Content() const;
  std::string Text() const;

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace borvan_fuzz
