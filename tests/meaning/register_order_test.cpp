// What the registers afterwards don't show of a register list: its pauses, and the delay values
// that its blocks carry. Seen on the plan, so that nothing sleeps.

#include <gtest/gtest.h>

#include <algorithm>

#include "comparison.h"
#include "protocol/register_list_plan.h"
#include "random_lists.h"
#include "register_reading.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kRegisterSeeds = 3000;

TEST(RegisterListOrder, AllPausesComeFirstInTheirOrder) {
  const auto make = [](std::uint32_t seed) {
    List list = RandomRegisterList(seed);
    for (std::size_t i = 0; i < list.size(); i += 10) {
      list[i] = {0xFFFF, static_cast<std::uint32_t>(i % 300)};
    }
    return list;
  };
  ExpectAllPass(kRegisterSeeds, make, [](const List& list) -> std::string {
    const std::vector<std::uint32_t> planned = borvan::PlanRegisterList(list).pauses;
    List all = list;
    all.insert(all.begin(), {0xFFFD, 0});  // the plan does not look at the header
    return planned == ReadRegisterList(all).pauses ? "" : "  other pauses\n";
  });
}

struct Delays {
  bool marked = false;
  std::uint32_t first = 0;
  std::uint32_t second = 0;
};

// What stands before each plain register.
std::vector<Delays> DelaysBefore(const List& list) {
  std::vector<Delays> before;
  Delays next;
  std::uint32_t last_first = 0;
  for (const borvan::ListEntry& entry : list) {
    switch (entry.address) {
      case 0xFFFF:
        break;
      case 0xFFFD:
        last_first = entry.value;
        next = {true, entry.value, next.second};
        break;
      case 0xFFFE:
        next = {true, last_first, entry.value};
        break;
      default:
        before.push_back(next);
        next = {};
        break;
    }
  }
  return before;
}

// Neighbours never have the same value, so a record that is there twice was repeated by the
// library.
List WithAlternatingValues(List list) {
  std::uint32_t value = 0;
  for (borvan::ListEntry& entry : list) {
    if (entry.address < 0xFFFD || entry.address > 0xFFFF) {
      value ^= 1;
      entry.value = value;
    }
  }
  return list;
}

// How many plain registers a block writes.
std::size_t RegistersOf(const borvan::Packet& packet) {
  const std::size_t count = packet[3];
  if (packet[1] == 0x00 || count < 2) {
    return count;
  }
  const auto last = packet.begin() + static_cast<std::ptrdiff_t>(10 + 3 * (count - 1));
  return std::equal(last, last + 3, last - 3) ? count - 1 : count;
}

std::string CheckDelays(const List& shrunk) {
  const List list = WithAlternatingValues(shrunk);
  const std::vector<Delays> before = DelaysBefore(list);
  Delays current;
  std::size_t at = 0;
  for (const borvan::RegisterListBlock& block : borvan::PlanRegisterList(list).blocks) {
    const borvan::Packet& packet = block.packet;
    const bool is_run = packet[1] == 0x00;
    const std::size_t count = RegistersOf(packet);
    if (at + count > before.size()) {
      return "  more registers than the list has\n";
    }
    const std::string where = "  the block of plain register " + std::to_string(at);
    if (before[at].marked) {
      current = before[at];
    }
    for (std::size_t i = at + 1; i < at + count && !is_run; ++i) {
      if (before[i].marked) {
        return where + " goes on over a mark\n";
      }
    }
    const bool flag = is_run ? before[at].marked : current.first != 0 && current.second != 0;
    if (packet[is_run ? 4 : 6] != (current.first & 0xFF) ||
        packet[is_run ? 5 : 9] != (current.second & 0xFF) || packet[2] != (flag ? 1 : 0)) {
      return where + " carries other delays\n";
    }
    at += count;
  }
  return at == before.size() ? "" : "  registers are missing\n";
}

// A run takes marks inside it with it; every other mark begins a new block.
TEST(RegisterListOrder, BlocksCarryTheDelaysBeforeTheirFirstRegister) {
  ExpectAllPass(kRegisterSeeds, RandomRegisterList, CheckDelays);
}

}  // namespace
}  // namespace borvan_test
