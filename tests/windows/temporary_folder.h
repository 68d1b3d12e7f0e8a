#pragma once

#include <filesystem>
#include <string>

namespace test {

// An empty folder, removed with all that is in it at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

  // The 8-bit path of `name`, which is in the ANSI code page.
  std::string File(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

// Whether the system lets this account write files that are marked read-only: Windows never does,
// Wine leaves it to the file system, which lets root.
bool WritesReadOnlyFiles();

}  // namespace test
