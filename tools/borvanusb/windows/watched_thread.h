#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace borvanusb {

// Starts a thread like _beginthreadex: returns its handle, or 0 with the reason in GetLastError.
using ThreadStarter = std::uintptr_t (*)(unsigned(__stdcall* procedure)(void*), void* argument);
std::uintptr_t StartThread(unsigned(__stdcall* procedure)(void*), void* argument);

// Runs `work` on a new thread; returns its result or throws its exception. Calls `watch` at short
// intervals until the thread ends. If `watch` throws, the thread keeps running, so `work` must stay
// valid and the caller must end the process. Throws Failure kInternal if the thread can't be
// created, does not start within `begin_limit`, or ends without running `work`; then `work` is
// never run.
int RunWatched(const std::function<int()>& work, const std::function<void()>& watch,
               std::chrono::milliseconds begin_limit = std::chrono::seconds(30),
               ThreadStarter start = StartThread);

}  // namespace borvanusb
