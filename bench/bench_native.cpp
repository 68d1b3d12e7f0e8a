// Measures the library natively. Usage: bench_native FOLDER PART
// FOLDER takes the files it works with, several hundred MiB at a time; PART is memory, dumps, lists
// or waits.

#include "bench_native.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>

#include "cycle_clock.h"
#include "jobs/flash_jobs.h"
#include "native_device.h"

namespace bench {
namespace {

constexpr std::uint32_t kSize = 1U << 20U;
constexpr int kRounds = 5;
constexpr double kWaitNanoseconds = 125'000;

double Ratio(std::uint64_t measured, std::uint64_t yardstick) {
  return static_cast<double>(measured) / static_cast<double>(yardstick);
}

}  // namespace

void Print(const std::string& series, double value) {
  std::printf("%s %.9g\n", series.c_str(), value);
  std::fflush(stdout);
}

void Require(bool held, const std::string& what) {
  if (!held) {
    std::fprintf(stderr, "bench_native: %s\n", what.c_str());
    std::exit(1);
  }
}

double ProcessorMilliseconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

void MeasureWaits(const std::string& folder) {
  const auto control = std::make_shared<MemoryControl>(kSize);
  const auto device = MakeSelectedDevice(control);
  TransferClock& clock = control->Flash().Clock();
  const auto wait = static_cast<std::uint64_t>(kWaitNanoseconds * CyclesPerNanosecond());

  const std::vector<std::uint8_t> image = MakeImage(kSize);
  const std::string image_path = folder + "/waits_image.bin";
  const std::string dump_path = folder + "/waits_dump.bin";
  std::ofstream(image_path, std::ios::binary)
      .write(reinterpret_cast<const char*>(image.data()), kSize);
  const std::size_t programming = ScriptProgramming(image).size();
  const std::size_t reading = ScriptReading(kSize).size();

  for (int round = 0; round < kRounds; ++round) {
    borvan::FlashWriteJob write{image_path, device, {}, "00000000"};
    clock.Arm(programming, wait);
    std::uint64_t start = Cycles();
    borvan::RunFlashWriteJob(write);
    Print("waits.native.program_ratio", Ratio(Cycles() - start, clock.waited_cycles));
    Require(clock.done && clock.transfers == programming, "programming made other transfers");

    borvan::FlashQuickReadJob read{dump_path, device, {}, "0", "fffff"};
    clock.Arm(reading, wait);
    start = Cycles();
    borvan::RunFlashQuickReadJob(read);
    Print("waits.native.read_ratio", Ratio(Cycles() - start, clock.waited_cycles));
    Require(clock.done && clock.transfers == reading, "reading made other transfers");
    Require(std::filesystem::file_size(dump_path) == kSize, "the dump has another size");
  }
  std::filesystem::remove(image_path);
  std::filesystem::remove(dump_path);
}

}  // namespace bench

int main(int argc, char** argv) {
  const std::map<std::string, void (*)(const std::string&)> parts = {
      {"memory", bench::MeasureMemory},
      {"dumps", bench::MeasureDumps},
      {"lists", bench::MeasureLists},
      {"waits", bench::MeasureWaits}};
  if (argc != 3 || !std::filesystem::is_directory(argv[1]) || !parts.contains(argv[2])) {
    std::fprintf(stderr, "usage: bench_native FOLDER (an existing one) memory|dumps|lists|waits\n");
    return 2;
  }
  parts.at(argv[2])(argv[1]);
  return 0;
}
