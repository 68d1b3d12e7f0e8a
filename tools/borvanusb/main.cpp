// The process: one thread runs the command, this one watches over it. A call into the library can't
// be interrupted, so when one hangs, or when Ctrl-C comes twice, the process ends under it.
#include <windows.h>

#include <chrono>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/format.h"
#include "command/tool.h"
#include "dll/supervisor.h"
#include "windows/console.h"
#include "windows/crash_report.h"
#include "windows/text.h"
#include "windows/watched_thread.h"
#include "windows/windows_host.h"
#include "windows/workbench_process.h"

using namespace borvanusb;

namespace {

// After Ctrl-C a call gets that long to return.
constexpr std::chrono::milliseconds kStopLimit{1000};

class Process {
 public:
  explicit Process(std::vector<std::string> words) : words_(std::move(words)) {
    streams_.output = [this](std::string_view text) { return console_.WriteOutput(text); };
    streams_.error = [this](std::string_view text) { console_.WriteError(text); };
    streams_.output_is_terminal = console_.OutputIsTerminal();
    streams_.error_is_terminal = console_.ErrorIsTerminal();
    streams_.columns = [this] { return console_.Columns(); };
    streams_.move_up = [this](int lines) { console_.MoveUp(lines); };
  }

  // Runs the command and returns its exit code, or ends the process.
  int Run() {
    Console::OnStop([this] { OnStop(); });
    // After an exception the thread may still live: nothing that it uses is destroyed.
    try {
      return RunWatched([this] { return RunTool(words_, host_, streams_); },
                        [this] { LookAfterWorker(); });
    } catch (const Failure& failure) {
      EndWith(failure);
    } catch (...) {
      EndWithCurrentException();
    }
  }

 private:
  void LookAfterWorker() {
    if (const auto doing = supervisor_.Overdue()) {
      EndWith(Failure(ExitCode::kTimeout, Format("{}: the camera does not answer", *doing),
                      "Plug the camera in again and repeat the command; --timeout sets how long to "
                      "wait."));
    }
    if (supervisor_.StopRequested() && supervisor_.Overdue(kStopLimit)) {
      EndWith(
          Failure(ExitCode::kStopped, Format("stopped by the user while {}",
                                             supervisor_.Overdue(kStopLimit).value_or("waiting"))));
    }
  }

  // On a thread of the console's.
  void OnStop() {
    const int times = supervisor_.RequestStop();
    if (times == 1 && supervisor_.IsHeld()) {
      console_.WriteError("\nstopping at the next safe place; Ctrl-C again stops at once\n");
    }
    if (times > 1) {
      EndWith(Failure(ExitCode::kStopped, "stopped by the user in the middle"));
    }
  }

  [[noreturn]] void EndWith(const Failure& failure) {
    ReportFailure(words_, failure, supervisor_.LastWords(), streams_);
    EndProcess(static_cast<int>(failure.Code()));
  }

  const std::vector<std::string> words_;
  Console console_;
  Supervisor supervisor_;
  WindowsHost host_{console_, supervisor_};
  ToolStreams streams_;
};

int RunProcess(int argc, wchar_t** argv) {
  std::vector<std::string> words;
  for (int i = 1; i < argc; ++i) {
    words.push_back(ToUtf8(argv[i]));
  }
  RunIfWorker(words);
  Process process(std::move(words));
  return process.Run();
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  // No DLL is ever taken from the current folder, which may be one of downloads.
  SetDllDirectoryW(L"");
  ReportCrashes();
  try {
    // The console is the caller's again before the process ends.
    EndProcess(RunProcess(argc, argv));
  } catch (...) {
    EndWithCurrentException();
  }
}
