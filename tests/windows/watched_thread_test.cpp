// The thread on which the command-line tool runs its command, and what it says of one that fails.
#include "windows/watched_thread.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <process.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "base/failure.h"

namespace {
using namespace borvanusb;

using std::chrono::milliseconds;

constexpr milliseconds kBeginLimit{100};
constexpr milliseconds kLong{60000};

void Nothing() {}

std::uintptr_t FailToStart(unsigned(__stdcall* /*procedure*/)(void*), void* /*argument*/) {
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return 0;
}

// The last thread that was started suspended.
HANDLE& Suspended() {
  static HANDLE thread = nullptr;
  return thread;
}

std::uintptr_t StartSuspended(unsigned(__stdcall* procedure)(void*), void* argument) {
  const std::uintptr_t thread =
      _beginthreadex(nullptr, 0, procedure, argument, CREATE_SUSPENDED, nullptr);
  DuplicateHandle(GetCurrentProcess(), reinterpret_cast<HANDLE>(thread), GetCurrentProcess(),
                  &Suspended(), 0, FALSE, DUPLICATE_SAME_ACCESS);
  return thread;
}

unsigned __stdcall EndAtOnce(void* /*argument*/) {
  return 0;
}

std::uintptr_t StartWithoutProcedure(unsigned(__stdcall* /*procedure*/)(void*),
                                     void* /*argument*/) {
  return _beginthreadex(nullptr, 0, EndAtOnce, nullptr, 0, nullptr);
}

// What is reported instead of a result.
Failure FailureOf(const std::function<int()>& work, milliseconds limit, ThreadStarter start) {
  try {
    RunWatched(work, Nothing, limit, start);
  } catch (const Failure& failure) {
    return failure;
  }
  return {ExitCode::kDone, "no failure"};
}

TEST(WatchedThread, ReturnsWhatTheWorkReturns) {
  EXPECT_EQ(RunWatched([] { return 7; }, Nothing), 7);
}

TEST(WatchedThread, RunsTheWorkOnAnotherThread) {
  DWORD thread = 0;
  RunWatched(
      [&] {
        thread = GetCurrentThreadId();
        return 0;
      },
      Nothing);
  EXPECT_NE(thread, 0U);
  EXPECT_NE(thread, GetCurrentThreadId());
}

TEST(WatchedThread, ThrowsWhatTheWorkThrows) {
  EXPECT_THROW(RunWatched([]() -> int { throw std::out_of_range("far"); }, Nothing),
               std::out_of_range);
}

TEST(WatchedThread, WatchesWorkThatTakesLongerThanItsBeginning) {
  std::atomic<int> looks = 0;
  const auto work = [&] {
    while (looks < 5) {
      Sleep(10);
    }
    return 3;
  };
  EXPECT_EQ(RunWatched(
                work, [&] { ++looks; }, kBeginLimit),
            3);
}

TEST(WatchedThread, ThatCantBeCreatedIsReported) {
  const Failure failure = FailureOf([] { return 0; }, kLong, FailToStart);
  EXPECT_EQ(failure.Code(), ExitCode::kInternal);
  EXPECT_EQ(failure.Message().find("the thread that runs the command can't be created: "), 0U)
      << failure.Message();
}

TEST(WatchedThread, ThatNeverBeginsIsReportedAndDoesNotRunLater) {
  bool ran = false;
  const auto work = [&] {
    ran = true;
    return 0;
  };
  const Failure failure = FailureOf(work, kBeginLimit, StartSuspended);
  EXPECT_EQ(failure.Code(), ExitCode::kInternal);
  EXPECT_EQ(failure.Message(), "the thread that runs the command did not begin within 1 s");
  ResumeThread(Suspended());
  ASSERT_EQ(WaitForSingleObject(Suspended(), 60000), WAIT_OBJECT_0);
  CloseHandle(Suspended());
  EXPECT_FALSE(ran);
}

TEST(WatchedThread, ThatEndsWithoutItsWorkIsReported) {
  const Failure failure = FailureOf([] { return 0; }, kLong, StartWithoutProcedure);
  EXPECT_EQ(failure.Code(), ExitCode::kInternal);
  EXPECT_EQ(failure.Message(), "the thread that runs the command ended before it ran");
}

}  // namespace
