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

}  // namespace test
