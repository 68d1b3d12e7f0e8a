// Measures what a transfer of the virtual camera takes, beside the same transfers of the flash in
// memory. Usage: bench_virtual_camera FOLDER PLACE
// FOLDER takes the camera's files; PLACE goes into the names of the series, "native" or "dll".

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "core/camera.h"
#include "cycle_clock.h"
#include "memory_flash.h"
#include "transfer_script.h"

namespace bench {
namespace {

constexpr std::uint32_t kSize = 256U << 10U;
constexpr int kRounds = 15;

void Require(bool held, const char* what) {
  if (!held) {
    std::fprintf(stderr, "bench_virtual_camera: %s\n", what);
    std::exit(1);
  }
}

using Script = std::vector<ScriptedTransfer>;

// Runs the script by `transfer`, which returns whether one went well. Nanoseconds for each: the
// median of parts of the script, since a time slice of another program falls on one or two.
template <typename TransferFunction>
double Measure(const Script& script, const TransferFunction& transfer) {
  constexpr std::size_t kPart = 128;
  static const double kRate = CyclesPerNanosecond();
  bool went_well = true;
  std::vector<double> parts;
  for (std::size_t begin = 0; begin + kPart <= script.size(); begin += kPart) {
    const std::uint64_t start = Cycles();
    for (std::size_t i = begin; i < begin + kPart; ++i) {
      went_well &= transfer(script[i]);
    }
    parts.push_back(static_cast<double>(Cycles() - start) / kRate / kPart);
  }
  Require(went_well, "a transfer failed");
  const auto middle = parts.begin() + static_cast<std::ptrdiff_t>(parts.size() / 2);
  std::nth_element(parts.begin(), middle, parts.end());
  return *middle;
}

double MeasureMemory(const Script& script, MemoryFlash& flash) {
  std::array<std::uint8_t, 64> buffer{};
  return Measure(script, [&](const ScriptedTransfer& step) {
    std::uint32_t moved = 0;
    if (!step.is_get) {
      buffer = step.bytes;
    }
    return flash.Transfer(step.selector, step.is_get, buffer.data(), step.length, moved) ==
           kAnswerOk;
  });
}

double MeasureCamera(const Script& script, virtual_camera::Camera& camera) {
  std::array<std::uint8_t, 64> buffer{};
  return Measure(script, [&](const ScriptedTransfer& step) {
    const virtual_camera::Answer answer =
        step.is_get ? camera.Get(step.selector, std::span(buffer).first(step.length))
                    : camera.Set(step.selector, std::span(step.bytes).first(step.length));
    return answer.result == 0;
  });
}

virtual_camera::CameraConfiguration Configure(const std::string& folder, const std::string& name) {
  virtual_camera::CameraConfiguration configuration;
  configuration.path = R"(\\?\usb#vid_1234&pid_5678&mi_00#bench)";
  configuration.flash.size = kSize;
  configuration.flash.file = folder + "/" + name + ".flash";
  configuration.state_file = folder + "/" + name + ".state";
  return configuration;
}

void Run(const std::string& folder, const std::string& place) {
  const Script programming = ScriptProgramming(MakeImage(kSize));
  const Script reading = ScriptReading(kSize);
  MemoryFlash memory(kSize);
  virtual_camera::CameraConfiguration configuration = Configure(folder, "camera");
  virtual_camera::Camera camera(configuration);
  configuration = Configure(folder, "traced");
  configuration.trace_file = folder + "/trace.jsonl";
  virtual_camera::Camera traced(configuration);
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& [work, script] :
         {std::pair<const char*, const Script&>{"program", programming},
          std::pair<const char*, const Script&>{"read", reading}}) {
      const std::string series = "camera." + place + "." + work;
      std::printf("%s_memory_ns %.9g\n", series.c_str(), MeasureMemory(script, memory));
      std::printf("%s_camera_ns %.9g\n", series.c_str(), MeasureCamera(script, camera));
      std::printf("%s_traced_ns %.9g\n", series.c_str(), MeasureCamera(script, traced));
      std::fflush(stdout);
    }
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench_virtual_camera FOLDER native|dll\n");
    return 2;
  }
  const std::string folder = argv[1];
  bench::Run(folder, argv[2]);
  for (const char* const name :
       {"camera.flash", "camera.state", "traced.flash", "traced.state", "trace.jsonl"}) {
    std::error_code ignored;
    std::filesystem::remove(folder + "/" + name, ignored);
  }
  return 0;
}
