#include <malloc.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/list_entry.h"
#include "bench_native.h"
#include "files/list_file.h"
#include "protocol/i2c_list_plan.h"
#include "protocol/register_list_plan.h"

namespace bench {
namespace {

using Entries = std::vector<borvan::ListEntry>;
using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

constexpr std::size_t kLines = 1'000'000;
constexpr int kRounds = 9;

// Addresses stay below the reserved ones.
constexpr std::uint32_t kAddresses = 0x8000;

// One after the other, or never two in a row.
constexpr std::uint32_t kConsecutive = 1;
constexpr std::uint32_t kScattered = 2;

borvan::ListEntry EntryAt(std::size_t index, std::uint32_t step) {
  const auto number = static_cast<std::uint32_t>(index);
  return {number * step % kAddresses, number % 251};
}

void WriteLines(const std::string& path) {
  const OpenFile file(std::fopen(path.c_str(), "wb"), std::fclose);
  Require(file != nullptr, path + " can't be written");
  for (std::size_t i = 0; i < kLines; ++i) {
    const borvan::ListEntry entry = EntryAt(i, 7);
    Require(std::fprintf(file.get(), "0x%04x, 0x%02x,\r\n", entry.address, entry.value) > 0,
            path + " can't be written");
  }
}

// The C library's way to read such a file.
Entries ReadByScanning(const std::string& path) {
  const OpenFile file(std::fopen(path.c_str(), "r"), std::fclose);
  Require(file != nullptr, path + " can't be read");
  Entries list;
  char line[256];
  while (std::fgets(line, sizeof(line), file.get()) != nullptr) {
    borvan::ListEntry entry;
    // NOLINTNEXTLINE(cert-err34-c): the yardstick does as such programs do
    if (std::sscanf(line, "0x%x, 0x%x,", &entry.address, &entry.value) == 2) {
      list.push_back(entry);
    }
  }
  return list;
}

void MeasureReader(const std::string& folder) {
  const std::string path = folder + "/list.txt";
  WriteLines(path);
  {
    // What earlier work left with the allocator would hide growth.
    malloc_trim(0);
    Entries list;
    Print("lists.native.reader_memory_ratio",
          PeakGrowth([&] { list = borvan::ReadListFile(path); }) /
              static_cast<double>(kLines * sizeof(borvan::ListEntry)));
    Require(list.size() == kLines && list == ReadByScanning(path), "the list is another one");
  }
  for (int round = 0; round < kRounds; ++round) {
    double start = ProcessorMilliseconds();
    const std::size_t by_library = borvan::ReadListFile(path).size();
    Print("lists.native.reader_ms", ProcessorMilliseconds() - start);
    start = ProcessorMilliseconds();
    const std::size_t by_scanning = ReadByScanning(path).size();
    Print("lists.native.scanning_ms", ProcessorMilliseconds() - start);
    Require(by_library == kLines && by_scanning == kLines, "the lists have other lengths");
  }
  std::filesystem::remove(path);
}

// Nanoseconds an entry for planning a list and letting go of the plan. Short lists are planned many
// times over. `plan` returns how many packets or steps came out.
template <typename Plan>
void MeasurePlan(const std::string& name, const Entries& list, Plan plan) {
  const std::size_t times = kLines / list.size();
  std::size_t planned = 0;
  const double start = ProcessorMilliseconds();
  for (std::size_t i = 0; i < times; ++i) {
    planned += plan(list);
  }
  const double milliseconds = ProcessorMilliseconds() - start;
  Require(planned != 0, "nothing was planned");
  Print("lists.native." + name, milliseconds * 1e6 / static_cast<double>(times * list.size()));
}

Entries MakeList(std::size_t size, std::uint32_t step, Entries head) {
  Entries list = std::move(head);
  list.reserve(size);
  while (list.size() < size) {
    list.push_back(EntryAt(list.size(), step));
  }
  return list;
}

void MeasurePlanners() {
  const Entries register_head = {{0xFFFD, 0x00}};
  const Entries i2c_head = {{0xFFF8, 0x6C}, {0xFFFE, 0x03}};  // slave; 16-bit addresses, 8-bit data
  const std::pair<std::uint32_t, std::string> shapes[] = {{kConsecutive, "consecutive"},
                                                          {kScattered, "scattered"}};
  for (int round = 0; round < kRounds; ++round) {
    for (const std::size_t size : {std::size_t{10'000}, kLines}) {
      for (const auto& [step, shape] : shapes) {
        const std::string suffix = "_" + shape + "_" + std::to_string(size) + "_ns";
        MeasurePlan(
            "registers" + suffix, MakeList(size, step, register_head),
            [](const Entries& list) { return borvan::PlanRegisterList(list).blocks.size(); });
        const Entries i2c_list = MakeList(size, step, i2c_head);
        MeasurePlan("i2c_steps" + suffix, i2c_list,
                    [](const Entries& list) { return borvan::PlanI2cSteps(list).size(); });
        MeasurePlan("i2c_packets" + suffix, i2c_list, [](const Entries& list) {
          return borvan::PlanI2cPackets(list, 0).packets.size();
        });
      }
    }
  }
}

}  // namespace

void MeasureLists(const std::string& folder) {
  MeasureReader(folder);
  MeasurePlanners();
}

}  // namespace bench
