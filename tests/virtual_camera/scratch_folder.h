#pragma once

// A folder of its own for each test, gone when the test ends.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace virtual_camera_test {

class ScratchFolder {
 public:
  ScratchFolder() {
    // Several test programs may run at once.
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    for (int i = 0;; ++i) {
      path_ = std::filesystem::temp_directory_path() /
              ("virtual_camera_" + std::to_string(now) + "_" + std::to_string(i));
      if (std::filesystem::create_directory(path_)) {
        break;
      }
    }
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string File(const std::string& name) const { return (path_ / name).string(); }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  std::string Read(const std::string& name) const {
    std::ifstream stream(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace virtual_camera_test
