#include "windows/crash_report.h"

#include <windows.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <new>

#include "base/exit_code.h"

namespace borvanusb {

namespace {

// The exception codes of C++ exceptions from GCC and Microsoft's compiler. The runtime's own
// filter, which was installed before ours, turns an uncaught one into std::terminate.
constexpr DWORD kGccException = 0x20474343;
constexpr DWORD kMicrosoftException = 0xE06D7363;

LPTOP_LEVEL_EXCEPTION_FILTER& FilterBefore() {
  static LPTOP_LEVEL_EXCEPTION_FILTER filter = nullptr;
  return filter;
}

void WriteError(std::string_view text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
            nullptr);
}

LONG WINAPI OnCrash(EXCEPTION_POINTERS* crash) {
  const EXCEPTION_RECORD& record = *crash->ExceptionRecord;
  if (record.ExceptionCode == kGccException || record.ExceptionCode == kMicrosoftException) {
    return FilterBefore() == nullptr ? EXCEPTION_CONTINUE_SEARCH : FilterBefore()(crash);
  }
  std::array<char, 80> text{};
  std::snprintf(
      text.data(), text.size(), "exception 0x%08lx at 0x%llx", record.ExceptionCode,
      static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(record.ExceptionAddress)));
  EndBroken("the program crashed", text.data());
}

void OnAbort(int /*signal*/) {
  EndBroken("the program was aborted");
}

[[noreturn]] void OnTerminate() {
  if (std::current_exception()) {
    EndWithCurrentException();
  }
  EndBroken("the program was terminated");
}

}  // namespace

void EndProcess(int code) {
  TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
  ExitProcess(static_cast<UINT>(code));  // not reached
}

void EndBroken(std::string_view what, std::string_view detail, std::string_view hint) {
  WriteError("borvanusb: ");
  WriteError(what);
  if (!detail.empty()) {
    WriteError(": ");
    WriteError(detail);
  }
  WriteError("\n  ");
  WriteError(hint);
  WriteError("\n");
  EndProcess(static_cast<int>(ExitCode::kInternal));
}

void EndWithCurrentException() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    EndBroken("there is not enough memory", {}, "Close other programs, or do less at a time.");
  } catch (const std::exception& exception) {
    EndBroken("internal error", exception.what());
  } catch (...) {
    EndBroken("internal error", "an exception without a text");
  }
}

void ReportCrashes() {
  FilterBefore() = SetUnhandledExceptionFilter(OnCrash);
  std::set_terminate(OnTerminate);
  // The library has its own C++ runtime. It calls abort of the C runtime, which both share.
  std::signal(SIGABRT, OnAbort);
}

}  // namespace borvanusb
