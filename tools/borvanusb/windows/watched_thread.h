#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace borvanusb {

// Starts a thread as _beginthreadex does: returns its handle, or 0 with the reason in GetLastError.
using ThreadStarter = std::uintptr_t (*)(unsigned(__stdcall* procedure)(void*), void* argument);
std::uintptr_t StartThread(unsigned(__stdcall* procedure)(void*), void* argument);

// Runs `work` on a thread of its own and returns what it returns, or throws what it throws. Until
// the thread ends, calls `watch` at short intervals; what `watch` throws leaves the thread running,
// and `work` must then outlive it: the caller ends the process. Throws Failure kInternal when the
// thread can't be created, does not begin within `begin_limit`, or ends without running `work`;
// `work` does not run afterwards.
int RunWatched(const std::function<int()>& work, const std::function<void()>& watch,
               std::chrono::milliseconds begin_limit = std::chrono::seconds(30),
               ThreadStarter start = StartThread);

}  // namespace borvanusb
