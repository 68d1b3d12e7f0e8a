#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Reads a whole file; false when it can't be opened or read.
bool ReadWholeFile(const std::string& file_name, std::vector<std::uint8_t>& bytes);

// Whether two names lead to the same existing file.
bool IsSameFile(const std::string& left, const std::string& right);

// Removes a file; true when there is none by that name afterwards.
bool RemoveFile(const std::string& file_name);

// How a file stands that another thread or program may still be writing.
struct FileState {
  bool exists = false;
  bool in_use = false;  // someone has it open
  std::uint64_t length = 0;
};
FileState LookAtFile(const std::string& file_name);
