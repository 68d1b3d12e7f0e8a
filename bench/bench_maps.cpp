// Reading register maps beside a bare parse of the same text by RapidXML: with its default flags,
// and with those that it calls the fastest, which make no nodes of texts. Usage: bench_maps
// Reads the files *.svd of the folder that BORVAN_SVD_MAPS names; without it, a map of 2 MB that it
// makes itself. Fails if reading the largest map takes more than twice as long as its bare
// parse with default flags.

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <rapidxml/rapidxml.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/files.h"
#include "cycle_clock.h"
#include "map_maker.h"
#include "maps/map_text.h"
#include "maps/read_svd.h"

namespace bench {
namespace {

constexpr double kMostRatio = 2;
constexpr std::size_t kMadeBytes = 2'000'000;
// So many rounds that most runs have some which nothing disturbed.
constexpr int kRounds = 400;

struct NamedText {
  std::string name;
  std::string text;
};

struct Times {
  double bare = std::numeric_limits<double>::max();
  double fastest = std::numeric_limits<double>::max();
  double reading = std::numeric_limits<double>::max();
};

template <int flags>
std::uint64_t ParseBare(std::string text) {
  const std::uint64_t start = Cycles();
  {
    const auto document = std::make_unique<rapidxml::xml_document<char>>();
    document->parse<flags>(text.data());
    if (document->first_node() == nullptr) {
      throw std::runtime_error("the bare parse found nothing");
    }
  }
  return Cycles() - start;
}

// From the text to the map, and letting go of the map.
std::uint64_t ReadMap(std::string text) {
  const std::uint64_t start = Cycles();
  {
    const borvanusb::RegisterMap map = borvanusb::ReadSvd(std::move(text));
    if (map.registers.empty()) {
      throw std::runtime_error("the map has no registers");
    }
  }
  return Cycles() - start;
}

Times Measure(const std::string& text) {
  Times times;
  const auto keep_least = [](double& least, std::uint64_t cycles) {
    least = std::min(least, static_cast<double>(cycles));
  };
  for (int round = 0; round < kRounds; ++round) {
    keep_least(times.bare, ParseBare<rapidxml::parse_default>(text));
    keep_least(times.fastest, ParseBare<rapidxml::parse_fastest>(text));
    keep_least(times.reading, ReadMap(text));
  }
  const double per_microsecond = CyclesPerNanosecond() * 1e3;
  times.bare /= per_microsecond;
  times.fastest /= per_microsecond;
  times.reading /= per_microsecond;
  return times;
}

// From the smallest to the largest.
std::vector<NamedText> Texts() {
  std::vector<NamedText> texts;
  const char* const folder = std::getenv("BORVAN_SVD_MAPS");
  if (folder == nullptr) {
    texts.push_back({"a map made for this", MakeMap(kMadeBytes)});
    return texts;
  }
  for (const std::string& name : borvanusb::FilesIn(folder)) {
    if (name.ends_with(".svd")) {
      texts.push_back({name, borvanusb::ReadWholeText(std::string(folder) + "/" + name)});
    }
  }
  if (texts.empty()) {
    throw std::runtime_error(std::string(folder) + " has no files *.svd");
  }
  std::stable_sort(texts.begin(), texts.end(), [](const NamedText& left, const NamedText& right) {
    return left.text.size() < right.text.size();
  });
  return texts;
}

int Run() {
  // Memory stays with the process: what the system takes to give it again depends on what was freed
  // before, and would be added to the one or the other by chance.
  constexpr int kAll = 1 << 25;  // the C library takes no more
  mallopt(M_TRIM_THRESHOLD, kAll);
  mallopt(M_MMAP_THRESHOLD, kAll);
  double ratio = 0;
  std::printf("h. reading a register map (yardstick: a bare parse), least of %d\n", kRounds);
  for (const NamedText& one : Texts()) {
    const borvanusb::MapCounts counts = borvanusb::CountsOf(borvanusb::ReadSvd(one.text));
    const Times times = Measure(one.text);
    ratio = times.reading / times.bare;
    const std::string title = "   " + one.name + ", " + std::to_string(one.text.size() / 1000) +
                              " kB, " + std::to_string(counts.registers) + " registers";
    std::printf("%-44s %7.0f us %7.0f us %11.2f %11s  %s\n", title.c_str(), times.reading,
                times.bare, ratio, "<= 2", ratio <= kMostRatio ? "target met" : "target missed");
    std::printf("%-44s %10s %7.0f us %11.2f\n", "      beside the fastest flags", "", times.fastest,
                times.reading / times.fastest);
  }
  return ratio <= kMostRatio ? 0 : 1;
}

}  // namespace
}  // namespace bench

int main() {
  try {
    return bench::Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_maps: %s\n", error.what());
    return 2;
  }
}
