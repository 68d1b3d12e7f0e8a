#include "list_text.h"

#include <set>
#include <sstream>

namespace borvan_test {
namespace {

constexpr int kShownDifferences = 10;

std::string Holding(const Registers& registers, const Place& place) {
  const auto found = registers.find(place);
  if (found == registers.end()) {
    return "nothing";
  }
  std::ostringstream text;
  text << "0x" << std::hex << found->second;
  return text.str();
}

}  // namespace

std::string ToText(const List& list) {
  std::ostringstream text;
  text << std::hex;
  for (const borvan::ListEntry& entry : list) {
    text << "  {0x" << entry.address << ", 0x" << entry.value << "},\n";
  }
  return text.str();
}

std::string Differences(const Registers& expected, const Registers& found) {
  std::set<Place> places;
  for (const Registers* const registers : {&expected, &found}) {
    for (const auto& [place, value] : *registers) {
      places.insert(place);
    }
  }
  std::ostringstream text;
  int shown = 0;
  for (const Place& place : places) {
    const std::string wanted = Holding(expected, place);
    const std::string held = Holding(found, place);
    if (wanted == held) {
      continue;
    }
    if (++shown > kShownDifferences) {
      text << "  and more\n";
      break;
    }
    text << "  " << (place.first == kChip ? "chip" : "sensor") << std::hex;
    if (place.first != kChip) {
      text << " 0x" << place.first - 1;
    }
    text << " register 0x" << place.second << std::dec << ": " << held << " instead of " << wanted
         << "\n";
  }
  return text.str();
}

}  // namespace borvan_test
