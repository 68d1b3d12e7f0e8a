#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace borvan::test {

// A path in the system's folder for temporary files, named after the running test; the file, if one
// is made there, goes with this object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& extension = ".tmp") {
    const auto* const info = ::testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::temp_directory_path() /
            (std::string("borvan_") + info->test_suite_name() + "_" + info->name() + extension);
    Remove();
  }

  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  ~TemporaryFile() { Remove(); }

  std::string Path() const { return path_.string(); }

  // The file's bytes as they lie on disk.
  std::string Content() const {
    std::ifstream stream(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

  void Fill(const std::string& content) const {
    std::ofstream stream(path_, std::ios::binary);
    stream << content;
  }

 private:
  void Remove() const {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  std::filesystem::path path_;
};

}  // namespace borvan::test
