// Measures borvanusb.exe: programming beside the DLL's own jobs, its start beside an empty program,
// and its list of cameras beside a bare enumeration.
// Usage: bench_tool FOLDER programming|start
// FOLDER takes the files it works with.

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench_camera.h"
#include "bench_camera_registration.h"
#include "bench_library.h"
#include "cycle_clock.h"
#include "transfer_script.h"

namespace bench {

void Print(const std::string& series, double value) {
  std::printf("%s %.9g\n", series.c_str(), value);
  std::fflush(stdout);
}

void Require(bool held, const std::string& what) {
  if (!held) {
    throw std::runtime_error(what);
  }
}

namespace {

constexpr std::uint32_t kMebibyte = 1U << 20U;
constexpr double kWaitNanoseconds = 125'000;
constexpr double kNanosecondsPerMillisecond = 1e6;

std::string ProgramFolder() {
  std::string name(MAX_PATH, '\0');
  name.resize(GetModuleFileNameA(nullptr, name.data(), MAX_PATH));
  return name.substr(0, name.rfind('\\') + 1);
}

// Runs a program beside this one to its end; what it prints is lost. Returns what it took.
std::uint64_t RunProgram(const std::string& command) {
  std::string line = ProgramFolder() + command;
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  PROCESS_INFORMATION process{};
  const std::uint64_t start = Cycles();
  Require(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                         &startup, &process) != FALSE,
          line + " can't be started");
  WaitForSingleObject(process.hProcess, INFINITE);
  const std::uint64_t took = Cycles() - start;
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  Require(code == 0, line + " failed");
  return took;
}

void WriteFileWith(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  Require(file.good(), path + " can't be written");
}

double Ratio(std::uint64_t measured, std::uint64_t yardstick) {
  return static_cast<double>(measured) / static_cast<double>(yardstick);
}

// Two readings: the tool believes none alone.
std::uint64_t TwoReadings(const std::string& dump_path, std::uint64_t wait) {
  std::uint64_t cycles = 0;
  for (int i = 0; i < 2; ++i) {
    const JobTimes reading = RunReading(dump_path, kMebibyte, wait);
    cycles += reading.whole + reading.file;
  }
  return cycles;
}

// The jobs of the DLL that do what the tool does: read what is there twice, erase and write, read
// twice again.
void MeasureProgramming(const std::string& folder) {
  constexpr int kRounds = 3;
  const std::vector<std::uint8_t> image = MakeImage(kMebibyte);
  std::vector<std::uint8_t> other = image;
  for (std::uint8_t& byte : other) {
    byte = static_cast<std::uint8_t>(byte ^ 0x5A);
  }
  const std::string image_path = folder + "\\tool_image.bin";
  const std::string other_path = folder + "\\tool_other.bin";
  const std::string dump_path = folder + "\\tool_dump.bin";
  WriteFileWith(image_path, image);
  WriteFileWith(other_path, other);

  const auto wait = static_cast<std::uint64_t>(kWaitNanoseconds * CyclesPerNanosecond());
  SetEnvironmentVariableA(kSizeVariable, std::to_string(kMebibyte).c_str());
  SetEnvironmentVariableA(kWaitVariable, std::to_string(wait).c_str());
  const std::string program = "borvanusb.exe flash program " + image_path + " --no-backup --quiet";
  for (int round = 0; round < kRounds; ++round) {
    const std::uint64_t reading = TwoReadings(dump_path, wait);
    const JobTimes writing = RunProgramming(image_path, kMebibyte, wait);
    const std::uint64_t jobs = reading + writing.whole + TwoReadings(dump_path, wait);
    SetEnvironmentVariableA(kContentVariable, other_path.c_str());
    Print("tool.program_ratio", Ratio(RunProgram(program), jobs));
    SetEnvironmentVariableA(kContentVariable, image_path.c_str());
    Print("tool.equal_ratio", Ratio(RunProgram(program), reading));
  }
}

// In turns, so that other work on the machine affects all of them alike.
void MeasureStart() {
  constexpr int kRounds = 25;
  const double rate = CyclesPerNanosecond() * kNanosecondsPerMillisecond;
  const auto measure = [rate](const char* series, const char* command) {
    Print(series, static_cast<double>(RunProgram(command)) / rate);
  };
  for (int round = 0; round < kRounds; ++round) {
    measure("tool.empty_ms", "bench_empty.exe");
    measure("tool.help_ms", "borvanusb.exe --help");
    measure("tool.version_ms", "borvanusb.exe --version");
    measure("tool.enumerate_ms", "bench_enumerate.exe");
    measure("tool.list_ms", "borvanusb.exe list");
  }
}

int Run(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: bench_tool FOLDER programming|start\n", stderr);
    return 2;
  }
  const std::string part = argv[2];
  Require(part == "programming" || part == "start", "there is no part " + part);
  const CameraRegistration registration;
  if (part == "start") {
    MeasureStart();
  } else {
    MeasureProgramming(argv[1]);
  }
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  try {
    return bench::Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_tool: %s\n", error.what());
    return 1;
  }
}
