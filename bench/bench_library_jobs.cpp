#include <borvan_usb.h>

#include "bench_camera.h"
#include "bench_library.h"
#include "cycle_clock.h"
#include "transfer_script.h"

namespace bench {
namespace {

constexpr int kPatienceMilliseconds = 120'000;

// Polls once a millisecond, so that the job has the processor to itself.
template <typename Condition>
void WaitUntil(Condition condition, const std::string& what) {
  for (int waited = 0; !condition(); ++waited) {
    Require(waited < kPatienceMilliseconds, what);
    Sleep(1);
  }
}

void SelectCamera() {
  // A fresh instance: the last job's report of 100 is wiped after three seconds, and with it
  // whatever a later job on the same instance has reported.
  UsbIniDevice();
  Require(UsbGetDeviceNum() == 1, "the benchmark's camera is not the only one");
  Require(UsbSelectDevice(0), "the camera can't be selected");
}

JobTimes Finish(std::uint64_t start) {
  TransferClock& clock = BenchCameraFlash()->Clock();
  WaitUntil([&clock] { return clock.done.load(); }, "the job's transfers did not end");
  WaitUntil(
      [] {
        const auto state = borvan_progress_state(GetProgressInfo());
        Require(state != kBorvanProgressFailed, "the job failed");
        return state == kBorvanProgressDone;
      },
      "the job did not end");
  Require(clock.transfers == clock.expected_transfers, "the job made other transfers");
  JobTimes times;
  times.transfers = clock.last_cycle - clock.first_cycle;
  times.whole = clock.last_cycle - start;
  times.waited = clock.waited_cycles;
  return times;
}

// The job keeps its file open until it has written it.
bool IsClosed(const std::string& path) {
  const HANDLE file =
      CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return false;
  }
  CloseHandle(file);
  return true;
}

}  // namespace

JobTimes RunProgramming(const std::string& image_path, std::uint32_t size,
                        std::uint64_t wait_cycles) {
  SelectCamera();
  BenchCameraFlash()->Clock().Arm(ProgrammingTransfers(size), wait_cycles);
  const std::uint64_t start = Cycles();
  Require(UsbFlashWriteFile(image_path.c_str(), 0), "the job can't be started");
  return Finish(start);
}

JobTimes RunReading(const std::string& dump_path, std::uint32_t size, std::uint64_t wait_cycles) {
  SelectCamera();
  DeleteFileA(dump_path.c_str());
  TransferClock& clock = BenchCameraFlash()->Clock();
  clock.Arm(ReadingTransfers(size), wait_cycles);
  const std::uint64_t start = Cycles();
  Require(UsbFlashQuickReadFile(dump_path.c_str(), 0, size - 1), "the job can't be started");
  JobTimes times = Finish(start);
  WaitUntil([&dump_path] { return IsClosed(dump_path); }, "the dump was not closed");
  times.file = Cycles() - clock.last_cycle;
  return times;
}

}  // namespace bench
