// Measures BorvanUSB_x64.dll through its exports, with a camera that DirectShow finds in this
// process. Usage: bench_library FOLDER transfers|waits|dump|memory-program|memory-dump
// FOLDER takes the files it works with. The memory parts want a process of their own each: a peak
// can't be set back.

#include "bench_library.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <vector>

#include "bench_camera.h"
#include "bench_camera_registration.h"
#include "cycle_clock.h"
#include "transfer_script.h"

namespace bench {
namespace {

constexpr std::uint32_t kMebibyte = 1U << 20U;
constexpr double kWaitNanoseconds = 125'000;

double Ratio(std::uint64_t measured, std::uint64_t yardstick) {
  return static_cast<double>(measured) / static_cast<double>(yardstick);
}

// An image of whole mebibytes, written piece by piece so that no memory of it remains.
void MakeImageFile(const std::string& path, std::uint32_t mebibytes) {
  const std::vector<std::uint8_t> image = MakeImage(kMebibyte);
  std::ofstream file(path, std::ios::binary);
  for (std::uint32_t i = 0; i < mebibytes; ++i) {
    file.write(reinterpret_cast<const char*>(image.data()),
               static_cast<std::streamsize>(image.size()));
  }
  Require(file.good(), path + " can't be written");
}

// The bare loop: the script's calls and nothing else.
void PlayScript(const std::vector<ScriptedTransfer>& script) {
  IKsControl* const control = BenchCameraControl();
  KSP_NODE request = {};
  request.NodeId = 2;
  std::array<std::uint8_t, 64> buffer{};
  LONG answers = 0;
  for (const ScriptedTransfer& transfer : script) {
    request.Property.Id = transfer.selector;
    request.Property.Flags =
        (transfer.is_get ? KSPROPERTY_TYPE_GET : KSPROPERTY_TYPE_SET) | KSPROPERTY_TYPE_TOPOLOGY;
    // The control reads what a set hands it and leaves it as it is.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    auto* const bytes = const_cast<std::uint8_t*>(transfer.bytes.data());
    void* const data = transfer.is_get ? buffer.data() : bytes;
    ULONG returned = 0;
    answers |=
        control->KsProperty(&request.Property, sizeof(request), data, transfer.length, &returned);
  }
  Require(answers == 0 && BenchCameraFlash()->Clock().done.load(),
          "the bare loop's transfers failed");
}

// Returns what the bare loop took.
std::uint64_t RunScript(const std::vector<ScriptedTransfer>& script) {
  TransferClock& clock = BenchCameraFlash()->Clock();
  clock.Arm(script.size(), 0);
  PlayScript(script);
  return clock.last_cycle - clock.first_cycle;
}

// The bare job: a thread that reads the image, or makes the dump's file, and plays the script,
// while this one looks after it once a millisecond. Returns its time over the sum of the waits.
double RunBareJob(const std::vector<ScriptedTransfer>& script, const std::string& path,
                  bool is_reading, std::uint64_t wait) {
  TransferClock& clock = BenchCameraFlash()->Clock();
  clock.Arm(script.size(), wait);
  const std::uint64_t start = Cycles();
  std::thread job([&] {
    if (is_reading) {
      const std::ofstream dump(path, std::ios::binary);
      PlayScript(script);
    } else {
      std::ifstream image(path, std::ios::binary);
      std::vector<char> bytes(kMebibyte);
      image.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      PlayScript(script);
    }
  });
  while (!clock.done.load()) {
    Sleep(1);
  }
  job.join();
  return static_cast<double>(clock.last_cycle - start) / static_cast<double>(clock.waited_cycles);
}

void MeasureTransfers(const std::string& folder) {
  constexpr int kRounds = 40;
  const std::string image_path = folder + "\\transfers_image.bin";
  const std::string dump_path = folder + "\\transfers_dump.bin";
  MakeImageFile(image_path, 1);
  const auto programming = ScriptProgramming(MakeImage(kMebibyte));
  const auto reading = ScriptReading(kMebibyte);
  const double rate = CyclesPerNanosecond();
  const auto each = [rate](std::uint64_t cycles, std::size_t transfers) {
    return static_cast<double>(cycles) / rate / static_cast<double>(transfers);
  };
  for (int round = 0; round < kRounds; ++round) {
    Print("transfers.dll.program_library_ns",
          each(RunProgramming(image_path, kMebibyte, 0).transfers, programming.size()));
    Print("transfers.dll.program_bare_ns", each(RunScript(programming), programming.size()));
    Print("transfers.dll.read_library_ns",
          each(RunReading(dump_path, kMebibyte, 0).transfers, reading.size()));
    Print("transfers.dll.read_bare_ns", each(RunScript(reading), reading.size()));
  }
  DeleteFileA(image_path.c_str());
  DeleteFileA(dump_path.c_str());
}

void MeasureWaits(const std::string& folder) {
  constexpr int kRounds = 5;
  const std::string image_path = folder + "\\waits_image.bin";
  const std::string dump_path = folder + "\\waits_dump.bin";
  MakeImageFile(image_path, 1);
  const auto wait = static_cast<std::uint64_t>(kWaitNanoseconds * CyclesPerNanosecond());
  const auto programming = ScriptProgramming(MakeImage(kMebibyte));
  const auto reading = ScriptReading(kMebibyte);
  for (int round = 0; round < kRounds; ++round) {
    const JobTimes program = RunProgramming(image_path, kMebibyte, wait);
    Print("waits.dll.program_ratio", Ratio(program.whole, program.waited));
    Print("waits.dll.program_bare_ratio", RunBareJob(programming, image_path, false, wait));
    const JobTimes read = RunReading(dump_path, kMebibyte, wait);
    Print("waits.dll.read_ratio", Ratio(read.whole, read.waited));
    Print("waits.dll.read_bare_ratio", RunBareJob(reading, dump_path, true, wait));
  }
  DeleteFileA(image_path.c_str());
  DeleteFileA(dump_path.c_str());
}

// One write of the same text, from the file's creation to its closing.
std::uint64_t TimeOneWrite(const std::string& path, const std::vector<char>& text) {
  DeleteFileA(path.c_str());
  const std::uint64_t start = Cycles();
  const HANDLE file =
      CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  Require(file != INVALID_HANDLE_VALUE, path + " can't be created");
  DWORD written = 0;
  const BOOL taken =
      WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  CloseHandle(file);
  Require(taken != FALSE && written == text.size(), path + " can't be written");
  return Cycles() - start;
}

void MeasureDump(const std::string& folder) {
  constexpr int kRounds = 9;
  constexpr std::uint32_t kSize = 16 * kMebibyte;
  const std::string path = folder + "\\dump_text.txt";
  const std::vector<std::uint8_t> image = MakeImage(kSize);
  std::copy(image.begin(), image.end(), BenchCameraFlash()->Bytes());
  RunReading(path, kSize, 0);
  std::ifstream dump(path, std::ios::binary);
  const std::vector<char> text{std::istreambuf_iterator<char>(dump), {}};
  dump.close();
  Require(text.size() == std::size_t{kSize} / 8 * 37, "the dump has another size");

  const double milliseconds = 1e-6 / CyclesPerNanosecond();
  for (int round = 0; round < kRounds; ++round) {
    Print("dump.dll.write_ms", static_cast<double>(RunReading(path, kSize, 0).file) * milliseconds);
    Print("dump.dll.one_write_ms", static_cast<double>(TimeOneWrite(path, text)) * milliseconds);
  }
  DeleteFileA(path.c_str());
}

PROCESS_MEMORY_COUNTERS Memory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  Require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != FALSE,
          "the memory of the process can't be told");
  return counters;
}

void MeasureMemory(const std::string& folder, bool program) {
  constexpr std::uint32_t kMebibytes = 64;
  const std::string path = folder + (program ? "\\memory_image.bin" : "\\memory_dump.txt");
  MakeImageFile(folder + "\\memory_image.bin", kMebibytes);
  // Everything that is there once is there before: the flash, the library's first job.
  BenchCameraFlash();
  RunReading(folder + "\\memory_small.txt", kMebibyte, 0);
  const SIZE_T before = Memory().WorkingSetSize;
  if (program) {
    RunProgramming(path, kMebibytes * kMebibyte, 0);
  } else {
    RunReading(path, kMebibytes * kMebibyte, 0);
  }
  const double growth = static_cast<double>(Memory().PeakWorkingSetSize - before);
  Print(program ? "memory.dll.program_64_ratio" : "memory.dll.text_dump_64_ratio",
        growth / (kMebibytes * double{kMebibyte}));
  DeleteFileA((folder + "\\memory_image.bin").c_str());
  DeleteFileA((folder + "\\memory_small.txt").c_str());
  DeleteFileA(path.c_str());
}

bool Run(const std::string& folder, const std::string& part) {
  if (part == "transfers") {
    MeasureTransfers(folder);
  } else if (part == "waits") {
    MeasureWaits(folder);
  } else if (part == "dump") {
    MeasureDump(folder);
  } else if (part == "memory-program" || part == "memory-dump") {
    MeasureMemory(folder, part == "memory-program");
  } else {
    return false;
  }
  return true;
}

}  // namespace

void Print(const std::string& series, double value) {
  std::printf("%s %.9g\n", series.c_str(), value);
  std::fflush(stdout);
}

void Require(bool held, const std::string& what) {
  if (!held) {
    throw std::runtime_error(what);
  }
}

}  // namespace bench

int main(int argc, char** argv) {
  constexpr char kUsage[] =
      "usage: bench_library FOLDER transfers|waits|dump|memory-program|memory-dump\n";
  if (argc != 3) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    const bench::CameraRegistration registration;
    if (!bench::Run(argv[1], argv[2])) {
      std::fputs(kUsage, stderr);
      return 2;
    }
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "bench_library: %s\n", problem.what());
    return 1;
  }
  return 0;
}
