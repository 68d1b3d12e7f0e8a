#include "support/turns.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "support/check.h"

namespace borvan_fuzz {
namespace {

thread_local Turns* g_turns = nullptr;

// A value that no thread of the system has.
constexpr pthread_t kWaitingThread = 1;

}  // namespace

Turns::Turns() {
  Check(g_turns == nullptr, "one object at a time directs a thread's turns");
  g_turns = this;
}

Turns::~Turns() {
  while (RunNext()) {
  }
  g_turns = nullptr;
}

bool Turns::RunNext() {
  if (threads_.empty()) {
    return false;
  }
  const Thread thread = threads_.front();
  threads_.pop_front();
  thread.procedure(thread.argument);
  return true;
}

Turns* Turns::OfThisThread() {
  return g_turns;
}

}  // namespace borvan_fuzz

// Replaces the system's functions in the whole program. Other threads, such as the fuzzer's own,
// get the original behaviour. If a sanitizer replaces these functions, its versions are called by
// the first names.
extern "C" {

int __interceptor_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                 void* (*procedure)(void*), void* argument);

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*procedure)(void*),
                   void* argument) {
  borvan_fuzz::Turns* const turns = borvan_fuzz::Turns::OfThisThread();
  if (turns == nullptr) {
    return __interceptor_pthread_create(thread, attributes, procedure, argument);
  }
  turns->Add(procedure, argument);
  *thread = borvan_fuzz::kWaitingThread;
  return 0;
}

int pthread_detach(pthread_t thread) {
  if (thread == borvan_fuzz::kWaitingThread) {
    return 0;
  }
  using Detach = int (*)(pthread_t);
  static const auto kDetach = reinterpret_cast<Detach>(dlsym(RTLD_NEXT, "pthread_detach"));
  return kDetach(thread);
}

int nanosleep(const timespec* time, timespec* rest) {
  borvan_fuzz::Turns* const turns = borvan_fuzz::Turns::OfThisThread();
  if (turns == nullptr) {
    return static_cast<int>(syscall(SYS_nanosleep, time, rest));
  }
  turns->Sleep(std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
  return 0;
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  borvan_fuzz::Turns* const turns = borvan_fuzz::Turns::OfThisThread();
  if (turns != nullptr && clock == CLOCK_MONOTONIC && result == 0) {
    constexpr long kSecond = 1'000'000'000;
    const long long slept = turns->Slept().count() + time->tv_nsec;
    time->tv_sec += static_cast<time_t>(slept / kSecond);
    time->tv_nsec = static_cast<long>(slept % kSecond);
  }
  return result;
}

}  // extern "C"
