#include "windows/workbench_process.h"

#include <windows.h>

#include <bcrypt.h>
#include <shellapi.h>

#include <array>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "windows/handle.h"
#include "windows/loaded_library.h"
#include "windows/pipe.h"
#include "windows/pipe_lines.h"
#include "windows/system_library.h"
#include "windows/text.h"
#include "windows/workbench_words.h"

namespace borvanusb {

namespace {

Failure SystemFailure(const char* what) {
  return {ExitCode::kInternal, Format("{}: {}", what, SystemMessage(GetLastError())),
          "Close other programs and try again."};
}

// Passes only these handles to a new process. Sockets of the workbench must not stay open in it.
class InheritedHandles {
 public:
  explicit InheritedHandles(std::array<HANDLE, 2> handles) : handles_(handles) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_.resize(size);
    for (HANDLE const handle : handles_) {
      SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }
    if (InitializeProcThreadAttributeList(List(), 1, 0, &size) == FALSE ||
        UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                  sizeof(HANDLE) * handles_.size(), nullptr, nullptr) == FALSE) {
      throw SystemFailure("a worker process can't be prepared");
    }
  }
  ~InheritedHandles() { DeleteProcThreadAttributeList(List()); }
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;

  LPPROC_THREAD_ATTRIBUTE_LIST List() {
    return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
  }

 private:
  std::array<HANDLE, 2> handles_;
  std::vector<std::uint8_t> memory_;
};

UniqueHandle StartProcess(HANDLE orders, HANDLE reports) {
  InheritedHandles inherited({orders, reports});
  STARTUPINFOEXW startup{};
  startup.StartupInfo.cb = sizeof(startup);
  // Without a console, because a worker must not ask questions.
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  startup.lpAttributeList = inherited.List();
  const std::wstring program = ProgramFile();
  const std::string words =
      Format(" {} {} {}", kWorkerWord, reinterpret_cast<std::uintptr_t>(orders),
             reinterpret_cast<std::uintptr_t>(reports));
  std::wstring line = QuoteArgument(program) + ToWide(words);
  // A new process group: Ctrl-C only reaches the workbench, which informs its workers.
  constexpr DWORD kFlags = EXTENDED_STARTUPINFO_PRESENT | CREATE_NEW_PROCESS_GROUP;
  PROCESS_INFORMATION process{};
  if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, kFlags, nullptr, nullptr,
                     &startup.StartupInfo, &process) == FALSE) {
    throw SystemFailure("a worker process can't be started");
  }
  CloseHandle(process.hThread);
  return UniqueHandle(process.hProcess);
}

class WorkerProcess : public Worker {
 public:
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  explicit WorkerProcess(WorkerEvents events) {
    Pipe orders = MakePipe();
    Pipe reports = MakePipe();
    process_ = StartProcess(orders.read.get(), reports.write.get());
    // Closes our copies of the ends; otherwise the pipes never end.
    orders.read.reset();
    reports.write.reset();
    writer_ = std::make_unique<PipeWriter>(std::move(orders.write));
    reader_ = std::thread([this, pipe = std::move(reports.read), events = std::move(events)] {
      ReadPipeLines(pipe.get(), [&](const std::string& line) {
        if (const auto report = ReadReport(line)) {
          events.on_report(*report);
        }
      });
      WaitForSingleObject(process_.get(), INFINITE);
      DWORD code = 0;
      GetExitCodeProcess(process_.get(), &code);
      events.on_end(static_cast<int>(code));
    });
  }
  // An idle worker ends when its order pipe is closed. A busy one is not waited for.
  ~WorkerProcess() override {
    writer_.reset();
    TerminateProcess(process_.get(), 1);
    reader_.join();
  }

  void Send(const WorkerOrder& order) override { writer_->Write(LineOf(order)); }
  void Kill() override { TerminateProcess(process_.get(), 1); }

 private:
  UniqueHandle process_;
  std::unique_ptr<PipeWriter> writer_;
  std::thread reader_;
};

class WindowsWorkbench : public WorkbenchPlatform {
 public:
  std::unique_ptr<Worker> StartWorker(WorkerEvents events) override {
    return std::make_unique<WorkerProcess>(std::move(events));
  }

  std::string RandomHex(std::size_t bytes) override {
    decltype(&::BCryptGenRandom) generate = nullptr;
    std::vector<UCHAR> random(bytes);
    if (!FindFunction(SystemLibrary(L"bcrypt.dll"), "BCryptGenRandom", generate) ||
        generate(nullptr, random.data(), static_cast<ULONG>(bytes),
                 BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0) {
      throw SystemFailure("the system gives no random numbers");
    }
    std::string text;
    for (const UCHAR byte : random) {
      text += Format("{:02x}", byte);
    }
    return text;
  }

  bool OpenBrowser(const std::string& address) override {
    constexpr std::intptr_t kHighestError = 32;
    decltype(&::ShellExecuteW) execute = nullptr;
    return FindFunction(SystemLibrary(L"shell32.dll"), "ShellExecuteW", execute) &&
           reinterpret_cast<std::intptr_t>(execute(nullptr, L"open", ToWide(address).c_str(),
                                                   nullptr, nullptr, SW_SHOWNORMAL)) >
               kHighestError;
  }

  std::string DataFolder() const override {
    std::string given = ToUtf8(EnvironmentVariable(L"BORVANUSB_WORKBENCH"));
    if (!given.empty()) {
      return given;
    }
    const std::string local = ToUtf8(EnvironmentVariable(L"LOCALAPPDATA"));
    if (local.empty()) {
      throw Failure(ExitCode::kFile,
                    "the system names no folder for the user's data: LOCALAPPDATA is not set",
                    "Set BORVANUSB_WORKBENCH to a folder for the workbench's files.");
    }
    return Format("{}\\BorvanUSB\\workbench", local);
  }
};

}  // namespace

WorkbenchPlatform* SystemWorkbench() {
  static WindowsWorkbench workbench;
  return &workbench;
}

}  // namespace borvanusb
