#include "windows/child_processes.h"

#include <windows.h>

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "windows/handle.h"
#include "windows/loaded_library.h"
#include "windows/pipe.h"
#include "windows/text.h"

namespace borvanusb {

namespace {

struct Line {
  std::size_t child = 0;
  bool from_error = false;
  std::string text;
};

// A queue of the lines from all children's pipes, in order of arrival.
class Lines {
 public:
  void Add(Line line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
    changed_.notify_one();
  }
  void Open() { ++open_; }
  void Close() {
    const std::lock_guard lock(mutex_);
    --open_;
    changed_.notify_one();
  }
  // Waits for the next line. Returns false when all pipes are closed.
  bool Take(Line& line) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return !lines_.empty() || open_ == 0; });
    if (lines_.empty()) {
      return false;
    }
    line = std::move(lines_.front());
    lines_.pop_front();
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Line> lines_;
  int open_ = 0;
};

void ReadLines(HANDLE pipe, std::size_t child, bool from_error, Lines& lines) {
  std::string rest;
  std::array<char, 4096> part{};
  DWORD count = 0;
  while (ReadFile(pipe, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) != FALSE &&
         count > 0) {
    rest.append(part.data(), count);
    for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
      std::string text = rest.substr(0, end);
      rest.erase(0, end + 1);
      if (text.ends_with('\r')) {
        text.pop_back();
      }
      lines.Add({child, from_error, std::move(text)});
    }
  }
  if (!rest.empty()) {
    lines.Add({child, from_error, rest});
  }
  lines.Close();
}

// A pipe to which a new process can write.
Pipe MakeOutputPipe() {
  Pipe pipe = MakePipe();
  SetHandleInformation(pipe.write.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  return pipe;
}

std::wstring CommandLine(const std::wstring& program, const std::vector<std::string>& arguments) {
  std::wstring line = QuoteArgument(program);
  for (const std::string& argument : arguments) {
    line += L" " + QuoteArgument(ToWide(argument));
  }
  return line;
}

// A running child process, with the threads that read its output.
class Child {
 public:
  Child(std::size_t number, const std::vector<std::string>& arguments, Lines& lines) {
    Pipe output = MakeOutputPipe();
    Pipe error = MakeOutputPipe();
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = output.write.get();
    startup.hStdError = error.write.get();
    PROCESS_INFORMATION process{};
    const std::wstring program = ProgramFile();
    std::wstring line = CommandLine(program, arguments);
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &process) == FALSE) {
      throw Failure(ExitCode::kInternal, Format("a process for a camera can't be started: {}",
                                                SystemMessage(GetLastError())));
    }
    CloseHandle(process.hThread);
    process_.reset(process.hProcess);
    // Closes our copies of the pipes' write ends; otherwise the pipes never end. Children started
    // later can't inherit them.
    Start(std::move(output), number, false, lines);
    Start(std::move(error), number, true, lines);
  }
  ~Child() {
    for (std::thread& reader : readers_) {
      reader.join();
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  int WaitForCode() {
    WaitForSingleObject(process_.get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process_.get(), &code);
    return static_cast<int>(code);
  }

 private:
  void Start(Pipe pipe, std::size_t number, bool from_error, Lines& lines) {
    lines.Open();
    readers_.emplace_back([read = std::move(pipe.read), number, from_error, &lines] {
      ReadLines(read.get(), number, from_error, lines);
    });
  }

  UniqueHandle process_;
  std::vector<std::thread> readers_;
};

}  // namespace

std::vector<int> RunChildProcesses(
    const std::vector<std::vector<std::string>>& arguments,
    const std::function<void(std::size_t, bool, const std::string&)>& on_line) {
  Lines lines;
  std::vector<std::unique_ptr<Child>> children;
  lines.Open();  // keeps the queue open until all are started
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    children.push_back(std::make_unique<Child>(i, arguments[i], lines));
  }
  lines.Close();
  Line line;
  while (lines.Take(line)) {
    on_line(line.child, line.from_error, line.text);
  }
  std::vector<int> codes;
  codes.reserve(children.size());
  for (const auto& child : children) {
    codes.push_back(child->WaitForCode());
  }
  return codes;
}

}  // namespace borvanusb
