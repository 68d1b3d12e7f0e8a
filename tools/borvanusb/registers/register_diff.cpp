#include "registers/register_diff.h"

#include "base/chip_register.h"
#include "registers/register_list.h"

namespace borvanusb {

namespace {

constexpr std::size_t kPageEntries = 2;
constexpr unsigned kPageHighShift = 8;

}  // namespace

RegisterValues RegistersOf(const std::vector<ListEntry>& entries) {
  RegisterValues values;
  for (const ListEntry& entry : entries) {
    if (entry.address != kPauseMarker && entry.address != kFirstDelayMarker &&
        entry.address != kSecondDelayMarker) {
      values[entry.address] = entry.value;
    }
  }
  return values;
}

std::vector<RegisterDifference> CompareRegisters(const RegisterValues& left,
                                                 const RegisterValues& right) {
  std::vector<RegisterDifference> differences;
  auto at_left = left.begin();
  auto at_right = right.begin();
  while (at_left != left.end() || at_right != right.end()) {
    if (at_right == right.end() || (at_left != left.end() && at_left->first < at_right->first)) {
      differences.push_back({at_left->first, at_left->second, std::nullopt});
      ++at_left;
    } else if (at_left == left.end() || at_right->first < at_left->first) {
      differences.push_back({at_right->first, std::nullopt, at_right->second});
      ++at_right;
    } else {
      if (at_left->second != at_right->second) {
        differences.push_back({at_left->first, at_left->second, at_right->second});
      }
      ++at_left;
      ++at_right;
    }
  }
  return differences;
}

std::uint32_t PageOf(const std::vector<ListEntry>& entries) {
  if (entries.size() <= kPageEntries || entries[0].address != kFirstDelayMarker ||
      entries[1].address != kSecondDelayMarker) {
    return 0;
  }
  for (std::size_t i = kPageEntries + 1; i < entries.size(); ++i) {
    if (entries[i].address != entries[i - 1].address + 1) {
      return 0;
    }
  }
  return (entries[0].value & kLowByte) << kPageHighShift | (entries[1].value & kLowByte);
}

}  // namespace borvanusb
