#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera/host.h"
#include "dll/camera_library.h"
#include "windows/console.h"
#include "windows/console_terminal.h"
#include "windows/loaded_library.h"
#include "windows/windows_library_platform.h"

namespace borvanusb {

// Gives the commands access to the system and the library. The library is loaded when a command
// first needs it, so help is fast.
class WindowsHost : public Host {
 public:
  // Both must outlive it.
  WindowsHost(const Console& console, Supervisor& supervisor)
      : console_(console), supervisor_(supervisor) {}

  void Configure(const CommonArguments& arguments) override;
  std::vector<CameraIdentity> ListCameras() override;
  std::unique_ptr<Camera> OpenCamera(const CameraIdentity& camera) override;
  std::unique_ptr<Reservation> ReserveCamera(const CameraIdentity& camera) override;
  bool IsReservedElsewhere(const std::string& path) override;
  std::string JournalFolder() const override;
  bool StopRequested() const override { return supervisor_.StopRequested(); }
  std::unique_ptr<StopHold> HoldStop() override;
  void SetLastWords(std::function<std::vector<std::string>()> words) override;
  void Sleep(std::chrono::milliseconds time) override;
  std::chrono::system_clock::time_point Now() const override;
  std::chrono::steady_clock::time_point Clock() const override;
  bool Ask(const std::string& question) override;
  std::string ReadStandardInput() override;
  std::string Environment(const std::string& name) const override;
  SystemReport ExamineSystem() override;
  std::string LibraryVersion() override;
  Terminal* Prompt() override;
  void ForgetStop() override { supervisor_.ForgetStop(); }
  std::vector<std::string> Details() const override;
  WorkbenchPlatform* Workbench() override;
  std::vector<int> RunChildren(
      const std::vector<std::vector<std::string>>& arguments,
      const std::function<void(std::size_t, bool, const std::string&)>& on_line) override;

 private:
  CameraLibrary& Library();
  const LoadedLibrary& Loaded();

  const Console& console_;
  Supervisor& supervisor_;
  std::chrono::milliseconds limit_{CommonArguments().timeout};
  WindowsLibraryPlatform platform_;
  bool input_was_read_ = false;
  ConsoleTerminal terminal_{console_};
  std::vector<CameraIdentity> opened_;  // each camera only once
  std::optional<LoadedLibrary> loaded_;
  std::optional<CameraLibrary> library_;
};

}  // namespace borvanusb
