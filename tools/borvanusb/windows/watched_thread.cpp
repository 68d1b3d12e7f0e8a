#include "windows/watched_thread.h"

#include <windows.h>

#include <process.h>

#include <atomic>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "base/failure.h"
#include "base/format.h"
#include "windows/handle.h"
#include "windows/text.h"

namespace borvanusb {

namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD kWatchIntervalMs = 50;

enum class Stage { kStarting, kRunning, kAbandoned };

// The data that both threads share. Whichever ends last frees it.
struct Shared {
  std::function<int()> work;
  std::atomic<Stage> stage{Stage::kStarting};
  std::optional<int> result;
  std::exception_ptr exception;
};

// Leaves the starting stage. Only one of the two threads succeeds.
bool Enter(Shared& shared, Stage stage) {
  Stage starting = Stage::kStarting;
  return shared.stage.compare_exchange_strong(starting, stage);
}

unsigned __stdcall ThreadProcedure(void* argument) {
  const std::unique_ptr<const std::shared_ptr<Shared>> owned(
      static_cast<const std::shared_ptr<Shared>*>(argument));
  Shared& shared = **owned;
  if (!Enter(shared, Stage::kRunning)) {
    return 0;
  }
  try {
    shared.result = shared.work();
  } catch (...) {
    shared.exception = std::current_exception();
  }
  return 0;
}

Failure ThreadFailure(const std::string& what) {
  return {ExitCode::kInternal, Format("the thread that runs the command {}", what),
          "Close other programs and repeat the command."};
}

UniqueHandle Start(const std::shared_ptr<Shared>& shared, ThreadStarter start) {
  auto argument = std::make_unique<std::shared_ptr<Shared>>(shared);
  const std::uintptr_t thread = start(ThreadProcedure, argument.get());
  if (thread == 0) {
    throw ThreadFailure(Format("can't be created: {}", SystemMessage(GetLastError())));
  }
  // The thread owns it now. If the thread never starts, it is freed at the end of the process.
  static_cast<void>(argument.release());
  return UniqueHandle(reinterpret_cast<HANDLE>(thread));
}

}  // namespace

// Does not use std::thread: with winpthreads (seen with mingw-w64 10), a thread may end without
// having run its procedure, and no error is reported.
std::uintptr_t StartThread(unsigned(__stdcall* procedure)(void*), void* argument) {
  return _beginthreadex(nullptr, 0, procedure, argument, 0, nullptr);
}

int RunWatched(const std::function<int()>& work, const std::function<void()>& watch,
               std::chrono::milliseconds begin_limit, ThreadStarter start) {
  const auto shared = std::make_shared<Shared>();
  shared->work = work;
  const UniqueHandle thread = Start(shared, start);
  const Clock::time_point started = Clock::now();
  DWORD waited = WaitForSingleObject(thread.get(), kWatchIntervalMs);
  while (waited == WAIT_TIMEOUT) {
    if (Clock::now() - started > begin_limit && Enter(*shared, Stage::kAbandoned)) {
      throw ThreadFailure(Format("did not begin within {} s",
                                 std::chrono::ceil<std::chrono::seconds>(begin_limit).count()));
    }
    watch();
    waited = WaitForSingleObject(thread.get(), kWatchIntervalMs);
  }
  if (waited != WAIT_OBJECT_0) {
    throw ThreadFailure(Format("can't be waited for: {}", SystemMessage(GetLastError())));
  }
  if (shared->exception) {
    std::rethrow_exception(shared->exception);
  }
  if (!shared->result) {
    throw ThreadFailure("ended before it ran");
  }
  return *shared->result;
}

}  // namespace borvanusb
