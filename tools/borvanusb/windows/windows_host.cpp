#include "windows/windows_host.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "output/printable.h"
#include "windows/child_processes.h"
#include "windows/system_report.h"
#include "windows/text.h"
#include "windows/workbench_process.h"

namespace borvanusb {

namespace {

// The virtual camera also writes the transfers of this process to this file.
constexpr const wchar_t* kTraceVariable = L"BORVAN_VIRTUAL_CAMERA_TRACE";
constexpr std::chrono::milliseconds kSleepPart{50};

class CameraReservation : public Host::Reservation {
 public:
  explicit CameraReservation(std::unique_ptr<LibraryPlatform::CameraLock> lock)
      : lock_(std::move(lock)) {}

 private:
  std::unique_ptr<LibraryPlatform::CameraLock> lock_;
};

class SupervisorHold : public Host::StopHold {
 public:
  explicit SupervisorHold(Supervisor& supervisor) : hold_(supervisor) {}

 private:
  Supervisor::Hold hold_;
};

}  // namespace

void WindowsHost::Configure(const CommonArguments& arguments) {
  limit_ = arguments.timeout;
  supervisor_.SetLimit(limit_);
  if (library_) {
    library_->SetLimit(limit_);
  }
  if (!arguments.trace.empty()) {
    const std::wstring name = ToWide(arguments.trace);
    SetEnvironmentVariableW(kTraceVariable, name.c_str());
  }
}

const LoadedLibrary& WindowsHost::Loaded() {
  if (!loaded_) {
    loaded_ = LoadedLibrary::Load();
  }
  return *loaded_;
}

CameraLibrary& WindowsHost::Library() {
  if (!library_) {
    if (!Loaded().Problem().empty()) {
      throw Failure(ExitCode::kInternal, Loaded().Problem(),
                    "Put BorvanUSB_x64.dll beside borvanusb.exe, or name it with BORVANUSB_DLL.");
    }
    library_.emplace(Loaded().Functions(), platform_, supervisor_, limit_);
  }
  return *library_;
}

std::vector<CameraIdentity> WindowsHost::ListCameras() {
  return Library().ListCameras();
}

std::unique_ptr<Camera> WindowsHost::OpenCamera(const CameraIdentity& camera) {
  if (std::none_of(opened_.begin(), opened_.end(),
                   [&](const CameraIdentity& other) { return other.path == camera.path; })) {
    opened_.push_back(camera);
  }
  return UntilItWorks([&] { return OpenLibraryCamera(Library(), camera); });
}

std::unique_ptr<Host::Reservation> WindowsHost::ReserveCamera(const CameraIdentity& camera) {
  return UntilItWorks([&]() -> std::unique_ptr<Host::Reservation> {
    auto lock = platform_.LockCamera(camera.path, std::chrono::milliseconds(0));
    if (lock == nullptr) {
      throw Failure(
          ExitCode::kRefused,
          Format("another borvanusb is working with camera {}: {}", camera.name, camera.path),
          "Wait until it has ended, or use --wait; two at once would mix their transfers.");
    }
    return std::make_unique<CameraReservation>(std::move(lock));
  });
}

bool WindowsHost::IsReservedElsewhere(const std::string& path) {
  return platform_.LockCamera(path, std::chrono::milliseconds(0)) == nullptr;
}

std::string WindowsHost::JournalFolder() const {
  std::string given = Environment("BORVANUSB_JOURNALS");
  if (!given.empty()) {
    return given;
  }
  const std::string local = Environment("LOCALAPPDATA");
  if (local.empty()) {
    throw Failure(ExitCode::kFile,
                  "the system names no folder for the user's data: LOCALAPPDATA is not set",
                  "Set BORVANUSB_JOURNALS to a permanent folder; journals are stored there.");
  }
  return Format("{}\\BorvanUSB\\journals", local);
}

std::unique_ptr<Host::StopHold> WindowsHost::HoldStop() {
  return std::make_unique<SupervisorHold>(supervisor_);
}

void WindowsHost::SetLastWords(std::function<std::vector<std::string>()> words) {
  supervisor_.SetLastWords(std::move(words));
}

void WindowsHost::Sleep(std::chrono::milliseconds time) {
  const auto end = Clock() + time;
  while (!StopRequested() && Clock() < end) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock());
    platform_.Sleep(std::min(rest, kSleepPart));
  }
}

std::chrono::system_clock::time_point WindowsHost::Now() const {
  return std::chrono::system_clock::now();
}

std::chrono::steady_clock::time_point WindowsHost::Clock() const {
  return std::chrono::steady_clock::now();
}

bool WindowsHost::Ask(const std::string& question) {
  const std::string row = Printable(question);
  if (!Console::CanAsk()) {
    console_.WriteError(Format("{}\n", row));
    return false;
  }
  console_.WriteError(Format("{} [y/N] ", row));
  const std::string answer = console_.ReadLine();
  return answer == "y" || answer == "Y" || answer == "yes" || answer == "Yes";
}

std::string WindowsHost::ReadStandardInput() {
  if (input_was_read_) {
    throw Failure(ExitCode::kFile, "standard input was read before, it can't be read twice",
                  "Give the second text as a file.");
  }
  input_was_read_ = true;
  std::string content;
  if (const std::string problem = Console::ReadInput(content, [this] { return StopRequested(); });
      !problem.empty()) {
    throw Failure(ExitCode::kFile, Format("can't read standard input: {}", problem));
  }
  if (StopRequested()) {
    throw Failure(ExitCode::kStopped, "stopped by the user");
  }
  return content;
}

std::string WindowsHost::Environment(const std::string& name) const {
  return ToUtf8(EnvironmentVariable(ToWide(name).c_str()));
}

SystemReport WindowsHost::ExamineSystem() {
  return ExamineWindows(Loaded());
}

Terminal* WindowsHost::Prompt() {
  return Console::CanAsk() ? &terminal_ : nullptr;
}

std::string WindowsHost::LibraryVersion() {
  return Loaded().Version();
}

std::vector<std::string> WindowsHost::Details() const {
  if (!loaded_) {
    return {"library  not used"};
  }
  std::vector<std::string> details = {
      Format("library  {}{}", loaded_->File(),
             loaded_->Version().empty() ? "" : Format(", version {}", loaded_->Version()))};
  for (const CameraIdentity& camera : opened_) {
    details.push_back(Format("camera   {}  {}", CameraLine(camera), camera.path));
  }
  std::string calls;
  for (const auto& [doing, count] : supervisor_.Calls()) {
    calls += Format("{}{} {}", calls.empty() ? "" : ", ", doing, count);
  }
  details.push_back(Format("calls    {}", calls.empty() ? "none" : calls));
  return details;
}

WorkbenchPlatform* WindowsHost::Workbench() {
  return SystemWorkbench();
}

std::vector<int> WindowsHost::RunChildren(
    const std::vector<std::vector<std::string>>& arguments,
    const std::function<void(std::size_t, bool, const std::string&)>& on_line) {
  return RunChildProcesses(arguments, on_line);
}

}  // namespace borvanusb
