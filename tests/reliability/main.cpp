// The test program. Started with "--unload ROUND" it is a host that unloads the library beside
// running jobs and clear tasks; its exit code is 0, else the number of the step that went wrong, or
// the crash's own.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "../windows/crash_guard.h"
#include "host.h"

namespace {

using reliability::Below;

int UnloadBesideJobs(int round) {
  const reliability::JobFiles files;
  std::mt19937 random = reliability::RandomOf(round);
  CoInitialize(nullptr);
  // The camera's own module and COM's helpers stay: they are none of the library's.
  reliability::Library library = reliability::LoadBorvanUsb();
  if (!reliability::Start(library)) {
    return 1;
  }
  library.destroy();
  FreeLibrary(library.module);
  if (GetModuleHandleA("BorvanUSB_x64.dll") != nullptr) {
    return 2;
  }
  const std::size_t threads = reliability::Threads();
  library = reliability::LoadBorvanUsb();
  if (!reliability::Start(library)) {
    return 3;
  }
  const int jobs = 1 + Below(random, 8);
  for (int job = 0; job < jobs; ++job) {
    if (!files.Run(library, static_cast<reliability::Job>(Below(random, reliability::kJobs)),
                   job)) {
      return 4;
    }
  }
  // Now and then long enough for the jobs to end: then only clear tasks are left.
  const int wait = Below(random, 2) * Below(random, 60);
  Sleep(static_cast<DWORD>(wait));
  if (Below(random, 2) == 0) {
    library.destroy();
  }
  FreeLibrary(library.module);
  if (GetModuleHandleA("BorvanUSB_x64.dll") == nullptr) {
    return 5;
  }
  return reliability::ThreadsBecome(threads) ? 0 : 6;
}

}  // namespace

int main(int argc, char** argv) {
  test::EndOnCrash();
  try {
    if (argc == 3 && std::string(argv[1]) == "--unload") {
      return UnloadBesideJobs(static_cast<int>(std::strtol(argv[2], nullptr, 10)));
    }
    testing::InitGoogleTest(&argc, argv);
    const reliability::CameraRegistration registration;
    return RUN_ALL_TESTS();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reliability_test: %s\n", error.what());
    return 98;
  }
}
