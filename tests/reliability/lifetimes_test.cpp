// Hosts that start, list, select, end and unload beside running jobs and clear tasks, in an order
// drawn by chance. BORVAN_ROUNDS says how often, BORVAN_SEED with which numbers.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "host.h"

namespace reliability {
namespace {

constexpr std::array<std::uint32_t, 8> kStatuses = {
    0,          1,  // running or done, and the notice near a dump's end
    0xE0000001, 0xE0000002, 0xE0000003, 0xE0000007,
    0x80004003,  // no camera is open
    kUnplugged,
};

bool IsPossible(std::uint64_t progress) {
  const auto status = static_cast<std::uint32_t>(progress >> 32U);
  const std::int32_t percent = borvan_progress_percent(progress);
  return percent >= 0 && percent <= 100 &&
         std::find(kStatuses.begin(), kStatuses.end(), status) != kStatuses.end();
}

// One host thread's calls, and what they must leave behind.
class RandomHost {
 public:
  RandomHost(const Library& library, const JobFiles& files, int round)
      : library_(library), files_(files), random_(RandomOf(round)) {}

  // Returns the number of controls that the ended instances keep.
  int Run() {
    const DWORD apartments[] = {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED};
    const int kind = Below(random_, 3);
    if (kind < 2) {
      static_cast<void>(CoInitializeEx(nullptr, apartments[kind]));
    }
    Begin();
    const int steps = 5 + Below(random_, 30);
    for (int step = 0; step < steps; ++step) {
      Step();
    }
    MemoryCameraPlug();
    End();
    if (kind < 2) {
      CoUninitialize();
    }
    return kept_;
  }

 private:
  void Step() {
    switch (Below(random_, 12)) {
      case 0:
        Begin();
        break;
      case 1:
        End();
        Begin();
        break;
      case 2:
        EXPECT_TRUE(library_.update());
        break;
      case 3:
        Select();
        break;
      case 4:
        MemoryCameraUnplugAfter(Below(random_, 20));
        break;
      case 5:
        MemoryCameraPlug();
        break;
      case 6:
        Sleep(static_cast<DWORD>(Below(random_, 3)));
        break;
      case 7: {
        std::uint32_t value = 0;
        static_cast<void>(library_.register_read(0x1A3, &value, 0));
        break;
      }
      default:
        StartJobs();
        break;
    }
  }

  // An instance takes the place of the former one.
  void Begin() {
    kept_ += open_ ? 1 : 0;
    open_ = false;
    EXPECT_GE(library_.ini(), 0);
    Select();
  }

  void Select() {
    const std::int32_t camera = FindCamera(library_);
    ASSERT_GE(camera, 0);
    open_ = library_.select(camera);
    EXPECT_TRUE(open_);
  }

  void End() {
    kept_ += open_ ? 1 : 0;
    open_ = false;
    EXPECT_TRUE(library_.destroy());
  }

  void StartJobs() {
    constexpr std::size_t kThreads = 300;
    if (Threads() > kThreads) {
      EXPECT_TRUE(ThreadsBecome(kThreads / 2));
    }
    const int jobs = 2 + Below(random_, 7);
    for (int job = 0; job < jobs; ++job) {
      EXPECT_TRUE(files_.Run(library_, static_cast<Job>(Below(random_, kJobs)), job));
    }
  }

  const Library& library_;
  const JobFiles& files_;
  std::mt19937 random_;
  bool open_ = false;
  int kept_ = 0;
};

// Polls, as any thread of a host may, until it goes.
class Poller {
 public:
  explicit Poller(const Library& library)
      : thread_([this, &library] {
          while (!stop_) {
            const std::uint64_t progress = library.progress();
            if (!IsPossible(progress)) {
              impossible_ = progress;
            }
            SwitchToThread();
          }
        }) {}
  Poller(const Poller&) = delete;
  Poller& operator=(const Poller&) = delete;
  ~Poller() {
    stop_ = true;
    thread_.join();
    EXPECT_EQ(impossible_, 0U) << "a value that no job reports";
  }

 private:
  std::atomic<bool> stop_{false};
  std::atomic<std::uint64_t> impossible_{0};
  std::thread thread_;
};

TEST(Lifetimes, OfHostsInAnyApartmentEndWithNothingButTheKeptReferences) {
  const JobFiles files;
  const Library library = LoadBorvanUsb();
  // The first round makes what the process keeps for itself: COM's modules and its helper threads.
  std::thread([&] { RandomHost(library, files, 0).Run(); }).join();
  WaitForClearTasks();
  const std::size_t threads = Threads();
  const std::int32_t controls = MemoryCameraControls();
  const std::int32_t filters = MemoryCameraFilters();

  int kept = 0;
  {
    const Poller poller(library);
    const int rounds = Rounds(20);
    for (int round = 1; round <= rounds; ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      std::thread([&] { kept += RandomHost(library, files, round).Run(); }).join();
      ASSERT_FALSE(testing::Test::HasFailure());
    }
  }
  // Wine's listing starts a thread after a pause and keeps it.
  ASSERT_TRUE(ThreadsBecome(threads + 1)) << Threads() << " threads instead of " << threads;
  EXPECT_EQ(MemoryCameraControls() - controls, kept);
  EXPECT_EQ(MemoryCameraReferences(), MemoryCameraControls()) << "one reference to each";
  EXPECT_EQ(MemoryCameraFilters() - filters, kept);
}

// A process has about a thousand; who needs one more is ended by the runtime, or ends itself.
int FreeThreadLocalIndices() {
  std::vector<DWORD> indices;
  while (true) {
    const DWORD index = TlsAlloc();
    if (index == TLS_OUT_OF_INDEXES) {
      break;
    }
    indices.push_back(index);
  }
  for (const DWORD index : indices) {
    TlsFree(index);
  }
  return static_cast<int>(indices.size());
}

TEST(Lifetimes, OfALibraryWithoutJobsEndWhenItIsUnloaded) {
  if (GetModuleHandleA("BorvanUSB_x64.dll") != nullptr) {
    GTEST_SKIP() << "a job of this process has pinned the library: run this test alone";
  }
  CoInitialize(nullptr);
  const auto load_use_unload = [] {
    const Library library = LoadBorvanUsb();
    ASSERT_TRUE(Start(library));
    ASSERT_TRUE(library.destroy());
    FreeLibrary(library.module);
    ASSERT_EQ(GetModuleHandleA("BorvanUSB_x64.dll"), nullptr);
  };
  load_use_unload();  // COM and the camera take what they need once
  const std::int32_t controls = MemoryCameraControls();
  const int indices = FreeThreadLocalIndices();
  const int rounds = Rounds(20);
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    load_use_unload();
    ASSERT_FALSE(testing::Test::HasFatalFailure());
  }
  CoUninitialize();
  EXPECT_EQ(MemoryCameraControls() - controls, rounds) << "each round keeps its reference";
  EXPECT_EQ(FreeThreadLocalIndices(), indices);
}

DWORD RunSelf(const std::string& arguments) {
  std::array<char, 1024> program = {};
  GetModuleFileNameA(nullptr, program.data(), static_cast<DWORD>(program.size()));
  std::string line = "\"" + std::string(program.data()) + "\" " + arguments;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                     &process) == FALSE) {
    return 99;
  }
  constexpr DWORD kLongestRun = 120'000;
  if (WaitForSingleObject(process.hProcess, kLongestRun) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, 97);
    WaitForSingleObject(process.hProcess, kLongestRun);
  }
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

TEST(Lifetimes, OfAnUnloadedLibraryGoOnUntilItsJobsAndClearTasksAreOver) {
  // A process each, of three seconds and more.
  const int rounds = (Rounds(20) + 19) / 20;
  for (int round = 0; round < rounds; ++round) {
    EXPECT_EQ(RunSelf("--unload " + std::to_string(round)), 0U) << "round " << round;
  }
}

}  // namespace
}  // namespace reliability
