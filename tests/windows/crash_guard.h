#pragma once

#include <windows.h>

namespace test {

inline LONG WINAPI EndWithTheExceptionsCode(EXCEPTION_POINTERS* pointers) {
  TerminateProcess(GetCurrentProcess(), pointers->ExceptionRecord->ExceptionCode);
  return EXCEPTION_EXECUTE_HANDLER;
}

// From here on a crash ends the process at once with the exception's code. Otherwise Wine's
// debugger takes the process over and ends it with the exit code 0, which looks like success.
inline void EndOnCrash() {
  SetErrorMode(SEM_NOGPFAULTERRORBOX | SEM_FAILCRITICALERRORS);
  SetUnhandledExceptionFilter(EndWithTheExceptionsCode);
}

}  // namespace test
