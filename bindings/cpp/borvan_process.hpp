#pragma once

// Runs a program with its output in pipes. Programs use it through ProgramFlash.

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace borvan {
namespace detail {

inline std::wstring FromUtf8(const std::string& text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), size, wide.data(), length);
  return wide;
}

// Quotes an argument and appends it to a command line, so that the program receives it unchanged.
inline void AppendArgument(std::wstring& line, const std::wstring& argument) {
  line += line.empty() ? L"\"" : L" \"";
  std::size_t backslashes = 0;
  for (const wchar_t letter : argument) {
    if (letter == L'"') {
      line.append(backslashes + 1, L'\\');  // doubled, and one for the quotation mark
    }
    backslashes = letter == L'\\' ? backslashes + 1 : 0;
    line += letter;
  }
  line.append(backslashes, L'\\');
  line += L'"';
}

class Handle {
 public:
  Handle() = default;
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() { Close(); }

  HANDLE Get() const { return handle_; }
  void Close() {
    if (handle_ != nullptr) {
      CloseHandle(std::exchange(handle_, nullptr));
    }
  }

 private:
  HANDLE handle_ = nullptr;
};

// A pipe whose `write` end a child may inherit.
struct Pipe {
  Handle read;
  Handle write;

  bool Open() {
    SECURITY_ATTRIBUTES inherited = {};
    inherited.nLength = sizeof inherited;
    inherited.bInheritHandle = TRUE;
    HANDLE read_end = nullptr;
    HANDLE write_end = nullptr;
    if (CreatePipe(&read_end, &write_end, &inherited, 0) == FALSE) {
      return false;
    }
    read = Handle(read_end);
    write = Handle(write_end);
    return SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0) != FALSE;
  }
};

// A running program. Its standard input is empty.
class Process {
 public:
  Process() = default;
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() { Join(); }

  // Starts it; returns 0, or the system's error number.
  DWORD Start(const std::vector<std::wstring>& arguments) {
    std::wstring line;
    for (const std::wstring& argument : arguments) {
      AppendArgument(line, argument);
    }
    Pipe input;
    if (!input.Open() || !output_.Open() || !errors_.Open()) {
      return GetLastError();
    }
    // The child reads the one pipe and writes the two others.
    SetHandleInformation(input.read.Get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SetHandleInformation(input.write.Get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.read.Get();
    startup.hStdOutput = output_.write.Get();
    startup.hStdError = errors_.write.Get();
    // At this program's console a group of its own can be sent Ctrl-Break alone. Without a console
    // here the child gets a hidden one.
    has_console_ = GetConsoleCP() != 0;
    const DWORD flags = has_console_ ? CREATE_NEW_PROCESS_GROUP : CREATE_NO_WINDOW;
    PROCESS_INFORMATION information = {};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags, nullptr, nullptr,
                       &startup, &information) == FALSE) {
      return GetLastError();
    }
    CloseHandle(information.hThread);
    process_ = Handle(information.hProcess);
    id_ = information.dwProcessId;
    output_.write.Close();
    errors_.write.Close();
    output_reader_ = std::thread([this] { ReadOutput(); });
    errors_reader_ = std::thread([this] { ReadErrors(); });
    return 0;
  }

  // The next line of standard error; nullopt when none came within the time. `ended` is set when
  // there will be none.
  std::optional<std::string> NextLine(DWORD milliseconds, bool& ended) {
    std::unique_lock<std::mutex> lock(mutex_);
    arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds),
                      [this] { return !lines_.empty() || errors_ended_; });
    ended = lines_.empty() && errors_ended_;
    if (lines_.empty()) {
      return std::nullopt;
    }
    std::string line = std::move(lines_.front());
    lines_.pop_front();
    return line;
  }

  // Asks the program to stop, as Ctrl-C at its console does. False when that can't be done.
  bool Interrupt() {
    if (has_console_) {
      return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, id_) != FALSE;
    }
    if (!attached_) {
      FreeConsole();  // Wine gives a program without a terminal a console that does not work
      if (AttachConsole(id_) == FALSE) {
        return false;
      }
    }
    // All processes of that console receive the Ctrl-C. This program ignores it, and stays at the
    // console until the child has ended.
    attached_ = true;
    SetConsoleCtrlHandler(nullptr, TRUE);
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != FALSE;
  }

  bool HasEnded() const { return WaitForSingleObject(process_.Get(), 0) == WAIT_OBJECT_0; }

  // Reads no further. Another program that inherited the pipes by chance would keep them open.
  void StopReading() {
    CancelIoEx(output_.read.Get(), nullptr);
    CancelIoEx(errors_.read.Get(), nullptr);
  }

  // Waits for the end. Returns the exit code; the standard output is in `output` then.
  DWORD Finish(std::string& output) {
    Join();
    WaitForSingleObject(process_.Get(), INFINITE);
    if (std::exchange(attached_, false)) {
      FreeConsole();
      SetConsoleCtrlHandler(nullptr, FALSE);
    }
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    output = std::move(output_text_);
    return code;
  }

 private:
  void Join() {
    for (std::thread* const thread : {&output_reader_, &errors_reader_}) {
      if (thread->joinable()) {
        thread->join();
      }
    }
  }

  template <typename Take>
  static void ReadAll(const Handle& handle, const Take& take) {
    char bytes[4096];
    DWORD count = 0;
    while (ReadFile(handle.Get(), bytes, sizeof bytes, &count, nullptr) != FALSE && count != 0) {
      take(bytes, count);
    }
  }

  void ReadOutput() {
    ReadAll(output_.read,
            [this](const char* bytes, DWORD count) { output_text_.append(bytes, count); });
  }

  void ReadErrors() {
    std::string line;
    ReadAll(errors_.read, [&](const char* bytes, DWORD count) {
      for (DWORD i = 0; i < count; ++i) {
        if (bytes[i] == '\n') {
          Add(std::move(line));
          line.clear();
        } else if (bytes[i] != '\r') {
          line += bytes[i];
        }
      }
    });
    if (!line.empty()) {
      Add(std::move(line));
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    errors_ended_ = true;
    arrived_.notify_all();
  }

  void Add(std::string line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    lines_.push_back(std::move(line));
    arrived_.notify_all();
  }

  Handle process_;
  DWORD id_ = 0;
  bool has_console_ = false;
  bool attached_ = false;  // to the child's console
  Pipe output_;
  Pipe errors_;
  std::string output_text_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::string> lines_;
  bool errors_ended_ = false;
  std::thread output_reader_;
  std::thread errors_reader_;
};

}  // namespace detail
}  // namespace borvan
