#include "windows/console.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "windows/text.h"

namespace borvanusb {

namespace {

constexpr int kUsualColumns = 80;

std::function<void()>& StopHandler() {
  static std::function<void()> handler;
  return handler;
}

BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    return FALSE;
  }
  StopHandler()();
  return TRUE;
}

bool IsTerminal(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

// Error codes for a pipe whose reader has closed it.
bool MeansReaderIsGone(DWORD error) {
  return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
}

std::optional<WriteProblem> WriteAll(HANDLE handle, std::string_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    if (WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ==
        FALSE) {
      const DWORD error = GetLastError();
      return WriteProblem{MeansReaderIsGone(error), SystemMessage(error)};
    }
    if (written == 0) {
      return WriteProblem{false, "it accepts no more data"};
    }
    text.remove_prefix(written);
  }
  return std::nullopt;
}

}  // namespace

Console::Console()
    : output_is_terminal_(IsTerminal(STD_OUTPUT_HANDLE)),
      error_is_terminal_(IsTerminal(STD_ERROR_HANDLE)) {
  if (output_is_terminal_ || error_is_terminal_) {
    old_code_page_ = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
  }
}

Console::~Console() {
  if (old_code_page_ != 0) {
    SetConsoleOutputCP(old_code_page_);
  }
}

std::optional<WriteProblem> Console::WriteOutput(std::string_view text) const {
  const HANDLE handle = GetStdHandle(STD_OUTPUT_HANDLE);
  return handle != nullptr ? WriteAll(handle, text) : std::nullopt;
}

void Console::WriteError(std::string_view text) const {
  WriteAll(GetStdHandle(STD_ERROR_HANDLE), text);
}

int Console::Columns() const {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE handle = GetStdHandle(error_is_terminal_ ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
  if (GetConsoleScreenBufferInfo(handle, &info) == FALSE) {
    return kUsualColumns;
  }
  return info.srWindow.Right - info.srWindow.Left + 1;
}

bool Console::CanAsk() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != FALSE;
}

void Console::MoveUp(int lines) const {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  const HANDLE handle = GetStdHandle(STD_ERROR_HANDLE);
  if (GetConsoleScreenBufferInfo(handle, &info) != FALSE) {
    const int row = std::max(0, info.dwCursorPosition.Y - lines);
    SetConsoleCursorPosition(handle, {0, static_cast<SHORT>(row)});
  }
}

std::string Console::ReadLine() const {
  DWORD mode = 0;
  const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
  if (GetConsoleMode(handle, &mode) == FALSE) {
    return {};
  }
  std::array<wchar_t, 256> text{};
  DWORD length = 0;
  if (ReadConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &length, nullptr) ==
      FALSE) {
    return {};
  }
  std::wstring_view line(text.data(), length);
  while (!line.empty() && (line.back() == L'\r' || line.back() == L'\n')) {
    line.remove_suffix(1);
  }
  return ToUtf8(line);
}

std::string Console::ReadInput(std::string& content, const std::function<bool()>& stop) {
  constexpr DWORD kWaitMs = 20;
  const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
    return "there is none";
  }
  const bool is_pipe = GetFileType(handle) == FILE_TYPE_PIPE;
  std::vector<char> part(std::size_t{1} << 16U);
  while (!stop()) {
    // Waits until data is available, because a blocking read of an empty pipe can't be stopped.
    if (DWORD available = 0;
        is_pipe && PeekNamedPipe(handle, nullptr, 0, nullptr, &available, nullptr) != FALSE &&
        available == 0) {
      Sleep(kWaitMs);
      continue;
    }
    DWORD count = 0;
    if (ReadFile(handle, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) == FALSE) {
      const DWORD error = GetLastError();
      const bool ended = MeansReaderIsGone(error) || error == ERROR_HANDLE_EOF || stop();
      return ended ? "" : SystemMessage(error);
    }
    if (count == 0) {
      break;
    }
    content.append(part.data(), count);
  }
  return {};
}

void Console::OnStop(std::function<void()> handler) {
  StopHandler() = std::move(handler);
  // Enables Ctrl-C again. Shells disable it for programs that they start in the background.
  SetConsoleCtrlHandler(nullptr, FALSE);
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

}  // namespace borvanusb
