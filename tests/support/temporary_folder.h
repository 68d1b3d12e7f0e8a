#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace borvan_test {

// Removes at the end of the process the folders of objects that the library never destroys: its
// list of cameras keeps them.
class FoldersToRemove {
 public:
  static FoldersToRemove& Instance() {
    static FoldersToRemove instance;
    return instance;
  }
  FoldersToRemove(const FoldersToRemove&) = delete;
  FoldersToRemove& operator=(const FoldersToRemove&) = delete;

  void Add(const std::filesystem::path& path) {
    const std::lock_guard lock(mutex_);
    paths_.insert(path);
  }
  void Remove(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
    const std::lock_guard lock(mutex_);
    paths_.erase(path);
  }

 private:
  FoldersToRemove() = default;
  ~FoldersToRemove() {
    std::error_code ignored;
    for (const std::filesystem::path& path : paths_) {
      std::filesystem::remove_all(path, ignored);
    }
  }

  std::mutex mutex_;
  std::set<std::filesystem::path> paths_;
};

// A folder of the test's own, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("borvan_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
    FoldersToRemove::Instance().Add(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { FoldersToRemove::Instance().Remove(path_); }

  std::string Path(const std::string& name) const { return (path_ / name).string(); }

  // Writes a file and returns its path.
  std::string Put(const std::string& name, std::string_view content) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    return Path(name);
  }

  std::string Content(const std::string& name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path path_;
};

}  // namespace borvan_test
