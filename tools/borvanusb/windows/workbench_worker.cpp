// A worker process of the workbench. One thread reads orders, another runs them, and the main
// thread supervises the calls into the library.
#include <windows.h>

#include <array>
#include <charconv>
#include <chrono>
#include <thread>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "command/tool.h"
#include "dll/supervisor.h"
#include "windows/console.h"
#include "windows/crash_report.h"
#include "windows/loaded_library.h"
#include "windows/pipe_lines.h"
#include "windows/text.h"
#include "windows/watched_thread.h"
#include "windows/windows_host.h"
#include "windows/workbench_process.h"
#include "windows/workbench_words.h"
#include "workbench/run_folder.h"
#include "workbench/worker_loop.h"

namespace borvanusb {

namespace {

// The time that a call has to return after a stop request.
constexpr std::chrono::milliseconds kStopLimit{1000};

constexpr std::array kFolderVariables = {L"BORVANUSB_DLL", L"BORVANUSB_JOURNALS",
                                         L"BORVANUSB_PROFILES", L"BORVAN_VIRTUAL_CAMERA",
                                         L"BORVAN_VIRTUAL_CAMERA_TRACE"};

class WorkerProgram {
 public:
  WorkerProgram(UniqueHandle orders, UniqueHandle reports)
      : orders_(std::move(orders)), writer_(std::move(reports)) {}

  [[noreturn]] void Run() {
    std::thread([this] {
      ReadPipeLines(orders_.get(), [this](const std::string& line) {
        if (const auto order = ReadOrder(line)) {
          loop_.Take(*order);
        }
      });
      loop_.Close();
    }).detach();
    EndProcess(RunWatched([this] { return loop_.Run(); }, [this] { LookAfterLoop(); }));
  }

 private:
  void LookAfterLoop() {
    if (const auto doing = supervisor_.Overdue()) {
      EndWith(Failure(ExitCode::kTimeout, Format("{}: the camera does not answer", *doing),
                      "Plug the camera in again and repeat the command. What was being changed is "
                      "unsure: read it back."));
    }
    if (supervisor_.StopRequested() && supervisor_.Overdue(kStopLimit)) {
      EndWith(
          Failure(ExitCode::kStopped, Format("stopped by the user while {}",
                                             supervisor_.Overdue(kStopLimit).value_or("waiting"))));
    }
  }

  // Called on the thread that reads orders.
  void OnStop() {
    if (supervisor_.RequestStop() > 1) {
      EndWith(Failure(ExitCode::kStopped, "stopped by the user in the middle",
                      "What was being changed is unsure: read it back, or run the same command "
                      "again."));
    }
  }

  void Enter(const std::string& folder) {
    hold_.emplace(folder);
    // Makes names absolute, because the user gave them relative to the folder where the workbench
    // was started.
    for (const wchar_t* const variable : kFolderVariables) {
      if (const std::string name = ToUtf8(EnvironmentVariable(variable)); !name.empty()) {
        SetEnvironmentVariableW(variable, ToWide(AbsoluteName(name)).c_str());
      }
    }
    if (SetCurrentDirectoryW(ToWide(folder).c_str()) == FALSE) {
      EndProcess(static_cast<int>(ExitCode::kFile));
    }
  }

  // Ends the process during the run, because a call into the library can't be interrupted.
  [[noreturn]] void EndWith(const Failure& failure) {
    const std::uint64_t number = loop_.Number();
    const auto send = [&](WorkerReport::Kind kind, std::string_view text) {
      writer_.Write(LineOf(WorkerReport{kind, number, std::string(text), 0}));
    };
    ToolStreams streams;
    streams.output = [&](std::string_view text) -> std::optional<WriteProblem> {
      send(WorkerReport::Kind::kOut, text);
      return std::nullopt;
    };
    streams.error = [&](std::string_view text) { send(WorkerReport::Kind::kError, text); };
    ReportFailure(words_, failure, supervisor_.LastWords(), streams);
    EndProcess(static_cast<int>(failure.Code()));
  }

  UniqueHandle orders_;
  PipeWriter writer_;
  Console console_;
  Supervisor supervisor_;
  WindowsHost host_{console_, supervisor_};
  std::optional<RunFolder::Hold> hold_;
  // The words for ReportFailure: pages always expect JSON.
  const std::vector<std::string> words_{"--json"};
  WorkerLoop loop_{host_,
                   {[this](const WorkerReport& report) { writer_.Write(LineOf(report)); },
                    [this] { supervisor_.ForgetStop(); }, [this] { OnStop(); },
                    [this](const std::string& folder) { Enter(folder); }}};
};

// The handle of a pipe, given as a number. Null if the word is invalid.
UniqueHandle PipeOf(const std::string& word) {
  std::uintptr_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  auto* const handle = reinterpret_cast<HANDLE>(number);
  DWORD flags = 0;
  if (error != std::errc() || end != word.data() + word.size() || number == 0 ||
      GetHandleInformation(handle, &flags) == FALSE || GetFileType(handle) != FILE_TYPE_PIPE) {
    return nullptr;
  }
  // Processes that this one starts must not inherit the pipes.
  SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
  return UniqueHandle(handle);
}

}  // namespace

void RunIfWorker(const std::vector<std::string>& words) {
  if (words.size() != 3 || words[0] != kWorkerWord) {
    return;
  }
  UniqueHandle orders = PipeOf(words[1]);
  UniqueHandle reports = PipeOf(words[2]);
  if (orders && reports && words[1] != words[2]) {
    WorkerProgram(std::move(orders), std::move(reports)).Run();
  }
}

}  // namespace borvanusb
