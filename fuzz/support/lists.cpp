#include "support/lists.h"

#include <array>

namespace borvan_fuzz {
namespace {

using List = std::vector<borvan::ListEntry>;

constexpr std::size_t kMostEntries = 800;
constexpr std::array<std::uint32_t, 6> kMarkers = {0xFFFF, 0xFFFD, 0xFFFE, 0xFFF8, 0xFEF0, 0xFEF1};

std::uint32_t AddressAfter(const List& list, std::uint32_t distance) {
  return list.empty() ? 0 : list.back().address + distance;
}

void AddRow(List& list, std::uint32_t count, std::uint32_t value) {
  for (std::uint32_t i = 0; i < count; ++i) {
    list.push_back({AddressAfter(list, 1), (value + i) & 0xFF});
  }
}

}  // namespace

// One byte selects the next part: below 64, that number plus one of adjacent registers, and so on.
std::vector<borvan::ListEntry> TakeList(Input& input) {
  List list;
  while (!input.Empty() && list.size() < kMostEntries) {
    const std::uint8_t kind = input.Byte();
    if (kind < 64) {
      AddRow(list, kind + 1U, input.Byte());
    } else if (kind < 128) {
      const std::uint32_t address = input.Half();
      list.push_back({address, input.Byte()});
    } else if (kind < 160) {
      list.push_back({AddressAfter(list, 2), input.Byte()});
    } else if (kind < 192) {
      list.push_back({kMarkers[kind % kMarkers.size()], input.Byte()});
    } else if (kind < 208) {
      list.push_back({kMarkers[kind % kMarkers.size()], input.Word()});
    } else if (kind < 224) {
      const std::uint32_t address = input.Word();
      list.push_back({address, input.Word()});
    } else if (kind < 240) {
      list.push_back({0xFFF8, input.Byte()});
      list.push_back({0xFFFE, input.Choice(8)});
    } else if (!list.empty()) {
      list.push_back(borvan::ListEntry(list.back()));
    }
  }
  return list;
}

}  // namespace borvan_fuzz
