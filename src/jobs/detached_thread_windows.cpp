#include <windows.h>

#include <process.h>

#include <cstdint>
#include <memory>
#include <system_error>

#include "jobs/detached_thread.h"

namespace borvan {
namespace {

struct Start {
  void (*procedure)(void*);
  void* argument;
};

unsigned __stdcall ThreadProcedure(void* argument) {
  const std::unique_ptr<const Start> start(static_cast<const Start*>(argument));
  start->procedure(start->argument);
  return 0;
}

}  // namespace

// Does not use std::thread: with winpthreads (seen with mingw-w64 10), one that is detached at once
// may never run its procedure, so that a host waits for its job forever, and each leaves a handle
// open.
void StartDetachedThread(void (*procedure)(void*), void* argument) {
  auto start = std::make_unique<Start>(Start{procedure, argument});
  const std::uintptr_t thread =
      _beginthreadex(nullptr, 0, ThreadProcedure, start.get(), 0, nullptr);
  if (thread == 0) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  static_cast<void>(start.release());
  CloseHandle(reinterpret_cast<HANDLE>(thread));
}

}  // namespace borvan
