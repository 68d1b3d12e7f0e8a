#include <filesystem>
#include <fstream>
#include <vector>

#include "base/hexadecimal_text.h"
#include "bench_native.h"
#include "jobs/flash_jobs.h"
#include "native_device.h"

namespace bench {
namespace {

constexpr std::size_t kFlashSize = std::size_t{128} << 20U;

// A line of /proc/self/status, in bytes.
double StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string field;
  while (status >> field) {
    double kibibytes = 0;
    if (field == name + ":" && status >> kibibytes) {
      return kibibytes * 1024;
    }
    status.ignore(1 << 12, '\n');
  }
  Require(false, "/proc/self/status lacks " + name);
  return 0;
}

}  // namespace

double PeakGrowth(const std::function<void()>& work) {
  {
    // 5 sets the peak back to what is resident now.
    std::ofstream reset("/proc/self/clear_refs");
    Require(static_cast<bool>(reset << "5" << std::flush), "the peak can't be reset");
  }
  const double before = StatusBytes("VmRSS");
  work();
  return StatusBytes("VmHWM") - before;
}

void MeasureMemory(const std::string& folder) {
  const auto control = std::make_shared<MemoryControl>(kFlashSize);
  const auto device = MakeSelectedDevice(control);
  const std::string image_path = folder + "/memory_image.bin";
  const std::string binary_path = folder + "/memory_dump.bin";
  const std::string text_path = folder + "/memory_dump.txt";

  // 64 MiB is the most that a read reserves at once; one more makes its memory grow on the way.
  for (const std::uint32_t mebibytes : {64U, 65U}) {
    const std::uint32_t size = mebibytes << 20U;
    {
      const std::vector<std::uint8_t> image = MakeImage(size);
      std::ofstream(image_path, std::ios::binary)
          .write(reinterpret_cast<const char*>(image.data()), size);
    }
    const std::string suffix = "_" + std::to_string(mebibytes) + "_ratio";
    const std::string end_address = borvan::FormatHex(size - 1);

    borvan::FlashWriteJob write{image_path, device, {}, "00000000"};
    Print("memory.native.program" + suffix,
          PeakGrowth([&write] { borvan::RunFlashWriteJob(write); }) / size);

    borvan::FlashQuickReadJob binary{binary_path, device, {}, "0", end_address};
    Print("memory.native.binary_dump" + suffix,
          PeakGrowth([&binary] { borvan::RunFlashQuickReadJob(binary); }) / size);
    Require(std::filesystem::file_size(binary_path) == size, "the dump has another size");

    borvan::FlashQuickReadJob text{text_path, device, {}, "0", end_address};
    Print("memory.native.text_dump" + suffix,
          PeakGrowth([&text] { borvan::RunFlashQuickReadJob(text); }) / size);
    Require(std::filesystem::file_size(text_path) == std::size_t{size} / 8 * 37,
            "the dump has another size");
  }
  for (const std::string& path : {image_path, binary_path, text_path}) {
    std::filesystem::remove(path);
  }
}

}  // namespace bench
