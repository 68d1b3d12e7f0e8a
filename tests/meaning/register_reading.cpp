#include "register_reading.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kPause = 0xFFFF;
constexpr std::uint32_t kFirstDelay = 0xFFFD;
constexpr std::uint32_t kSecondDelay = 0xFFFE;

bool IsDelay(const borvan::ListEntry& entry) {
  return entry.address == kFirstDelay || entry.address == kSecondDelay;
}

// Delays that no register or pause follows belong to nothing and are not looked at.
List WithoutTrailingDelays(List list) {
  while (!list.empty() && IsDelay(list.back())) {
    list.pop_back();
  }
  return list;
}

// A list must open with a first delay; pauses may stand before it, and alone.
bool HasHeader(const List& list) {
  for (const borvan::ListEntry& entry : list) {
    if (entry.address != kPause) {
      return entry.address == kFirstDelay;
    }
  }
  return true;
}

}  // namespace

RegisterReading ReadRegisterList(const List& whole) {
  const List list = WithoutTrailingDelays(whole);
  RegisterReading reading;
  if (!HasHeader(list)) {
    reading.result = 11;
    return reading;
  }
  for (const borvan::ListEntry& entry : list) {
    switch (entry.address) {
      case kPause:
        if (entry.value <= 255) {
          reading.pauses.push_back(entry.value);
        }
        break;
      case kFirstDelay:
      case kSecondDelay:
        break;
      default:
        reading.writes.push_back({entry.address & 0xFFFF, entry.value & 0xFF});
        break;
    }
  }
  return reading;
}

Registers ChipAfter(const List& writes, const std::map<std::uint32_t, std::uint32_t>& initial) {
  Registers registers;
  for (const borvan::ListEntry& write : writes) {
    const auto found = initial.find(write.address);
    const std::uint32_t before = found == initial.end() ? 0 : found->second;
    // A list moves bytes; the upper 24 bits of a register stay.
    registers[{kChip, write.address}] = (before & 0xFFFFFF00) | write.value;
  }
  return registers;
}

}  // namespace borvan_test
