#include "temporary_folder.h"

#include <windows.h>

#include <atomic>
#include <system_error>

namespace test {

TemporaryFolder::TemporaryFolder() {
  static std::atomic<int> count{0};
  path_ = std::filesystem::temp_directory_path() /
          ("borvan_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++count));
  std::filesystem::remove_all(path_);
  std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::File(const std::string& name) const {
  return path_.string() + "\\" + name;
}

bool WritesReadOnlyFiles() {
  const TemporaryFolder folder;
  const std::string path = folder.File("fixed");
  const HANDLE made = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_READONLY, nullptr);
  CloseHandle(made);
  const HANDLE opened =
      CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const bool writes = opened != INVALID_HANDLE_VALUE;
  if (writes) {
    CloseHandle(opened);
  }
  SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  return writes;
}

}  // namespace test
