// The library's own cost of a transfer, natively: a bulk operation and the bare loop of the same
// property calls, each call reaching the same flash in memory. What is timed is the thread's own
// processor time: the clock on the wall would count whatever else the machine does meanwhile.

#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "native_device.h"

namespace {

using bench::MemoryControl;

constexpr std::size_t kSize = std::size_t{1} << 20U;
constexpr std::size_t kRoomForPadding = 120;

// The one flash, device and image that all series share.
struct Bench {
  std::shared_ptr<MemoryControl> control = std::make_shared<MemoryControl>(kSize);
  std::shared_ptr<borvan::BorvanUsb_Q7> device = bench::MakeSelectedDevice(control);
  std::vector<std::uint8_t> image = bench::MakeImage(kSize);
  std::vector<bench::ScriptedTransfer> programming = bench::ScriptProgramming(image);
  std::vector<bench::ScriptedTransfer> reading = bench::ScriptReading(kSize);
};

Bench& Shared() {
  // A program that never had a second thread gets cheaper reference counts from its runtime. Jobs
  // have a thread of their own, so that their programs are never of this kind.
  static std::thread other_thread([] {});
  if (other_thread.joinable()) {
    other_thread.join();
  }
  static Bench shared;
  return shared;
}

double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Times `run` alone and counts it as `transfers` items. Its result must be 0 and the flash must
// have seen every transfer.
template <typename Prepare, typename Run>
void Measure(benchmark::State& state, std::size_t transfers, Prepare prepare, Run run) {
  bench::TransferClock& clock = Shared().control->Flash().Clock();
  for (auto _ : state) {
    auto prepared = prepare();
    clock.Arm(0, 0);
    const double start = ThreadSeconds();
    const std::int64_t result = run(prepared);
    state.SetIterationTime(ThreadSeconds() - start);
    if (result != 0 || clock.transfers != transfers) {
      state.SkipWithError("the transfers did not go as expected");
      return;
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(transfers) * state.iterations());
}

void ProgramByLibrary(benchmark::State& state) {
  // The job hands the image over with room for the padding, and so does this.
  const auto copy_image = [] {
    std::vector<std::uint8_t> image;
    image.reserve(kSize + kRoomForPadding);
    image = Shared().image;
    return image;
  };
  Measure(state, Shared().programming.size(), copy_image, [](std::vector<std::uint8_t>& image) {
    return std::int64_t{Shared().device->FlashWriteImage(std::move(image), 0, {})};
  });
}

void ProgramByBareLoop(benchmark::State& state) {
  Measure(
      state, Shared().programming.size(), [] { return 0; },
      [](int) { return bench::RunScript(*Shared().control, Shared().programming); });
}

void ReadByLibrary(benchmark::State& state) {
  Measure(
      state, Shared().reading.size(), [] { return std::vector<std::uint8_t>(); },
      [](std::vector<std::uint8_t>& bytes) {
        const std::int64_t result = Shared().device->FlashQuickReadImage(bytes, 0, kSize - 1, {});
        return bytes.size() == kSize ? result : -1;
      });
}

void ReadByBareLoop(benchmark::State& state) {
  Measure(
      state, Shared().reading.size(), [] { return 0; },
      [](int) { return bench::RunScript(*Shared().control, Shared().reading); });
}

}  // namespace

BENCHMARK(ProgramByLibrary)->UseManualTime();
BENCHMARK(ProgramByBareLoop)->UseManualTime();
BENCHMARK(ReadByLibrary)->UseManualTime();
BENCHMARK(ReadByBareLoop)->UseManualTime();

BENCHMARK_MAIN();
