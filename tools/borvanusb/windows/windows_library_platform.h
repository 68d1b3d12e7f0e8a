#pragma once

#include <string>

#include "dll/library_platform.h"

namespace borvanusb {

// The operating system functions for the library, on Windows.
class WindowsLibraryPlatform : public LibraryPlatform {
 public:
  ScratchFile NewScratchFile(std::string_view extension) override;
  void RemoveScratchFile(const ScratchFile& file) override;
  ScratchState Look(const ScratchFile& file) override;
  std::optional<std::vector<std::uint32_t>> Threads() override;
  std::size_t MostClearTasks() const override;
  std::string ToUtf8(std::string_view text) override;
  std::optional<std::string> DeviceName(const std::string& path) override;
  std::string SystemMessage(std::uint32_t status) override;
  void Sleep(std::chrono::milliseconds time) override;
  std::unique_ptr<CameraLock> LockCamera(const std::string& path,
                                         std::chrono::milliseconds limit) override;

 private:
  std::wstring scratch_folder_;
  unsigned scratch_files_ = 0;
};

}  // namespace borvanusb
