#include "random_lists.h"

#include <array>
#include <random>
#include <span>

namespace borvan_test {
namespace {

// The standard's distributions differ between libraries; its generator does not.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : generator_(seed) {}

  std::uint32_t Any() { return static_cast<std::uint32_t>(generator_()); }
  std::uint32_t Below(std::uint32_t limit) { return Any() % limit; }
  bool Percent(std::uint32_t chance) { return Below(100) < chance; }
  std::uint32_t OneOf(std::span<const std::uint32_t> numbers) {
    return numbers[Below(static_cast<std::uint32_t>(numbers.size()))];
  }

 private:
  std::mt19937 generator_;
};

// Around the borders of scatter blocks, of runs, and of twice as much.
constexpr std::array<std::uint32_t, 34> kLengths = {
    1,  2,  3,  14, 15, 16, 17, 18, 19, 20, 21, 22,  27,  28,  29,  30,  31,
    36, 37, 54, 55, 56, 57, 58, 75, 76, 77, 78, 111, 112, 113, 133, 134, 200};

constexpr std::array<std::uint32_t, 19> kStarts = {
    0,          1,          2,      0x10,       0xC8,       0xFE,       0x100,
    0x2F0,      0x1A0,      0x3012, 0x00010100, 0x12340000, 0xABCD0200, 0xFFFF0001,
    0x0001FF00, 0x80000100, 0xFFC8, 0x0001FFD8, 0xFFFFFFE0};

std::uint32_t RandomStart(Dice& dice) {
  return dice.Percent(70) ? dice.OneOf(kStarts) : dice.Below(0xF000);
}

std::uint32_t RandomValue(Dice& dice) {
  return dice.Percent(80) ? dice.Below(0x100) : dice.Any();
}

constexpr std::array<std::uint32_t, 6> kPausesThatTakeNoTime = {0,       256,        0x1FF,
                                                                0x10000, 0x80000005, 0xFFFFFFFF};

std::uint32_t RandomPause(Dice& dice, Pauses pauses) {
  return pauses == Pauses::kReal && dice.Percent(60) ? 1 + dice.Below(255)
                                                     : dice.OneOf(kPausesThatTakeNoTime);
}

// What stands between two registers of a run now and then.
void AddRegisterMark(List& list, Dice& dice) {
  switch (dice.Below(4)) {
    case 0:
      list.push_back({0xFFFD, RandomValue(dice)});
      break;
    case 1:
      list.push_back({0xFFFE, RandomValue(dice)});
      break;
    case 2:
      list.push_back({0xFFFD, RandomValue(dice)});
      list.push_back({0xFFFE, RandomValue(dice)});
      break;
    default:
      list.push_back({0xFFFF, RandomPause(dice, Pauses::kNone)});
      break;
  }
}

// No run by accident: the markers lie at the end of the first 64 Ki.
template <typename BetweenTwo>
void AddRun(List& list, Dice& dice, const BetweenTwo& between_two) {
  const std::uint32_t start = RandomStart(dice);
  const std::uint32_t length = dice.Percent(80) ? dice.OneOf(kLengths) : 1 + dice.Below(130);
  const bool is_interrupted = dice.Percent(15);
  for (std::uint32_t i = 0; i < length; ++i) {
    if (is_interrupted && dice.Percent(6)) {
      between_two();
    }
    list.push_back({start + i, RandomValue(dice)});
  }
}

void AddScattered(List& list, Dice& dice) {
  const std::uint32_t start = RandomStart(dice);
  const std::uint32_t step = dice.Below(4);  // 0: the same register again and again
  const std::uint32_t length = dice.OneOf(kLengths);
  for (std::uint32_t i = 0; i < length; ++i) {
    const std::uint32_t offset = dice.Percent(10) ? dice.Below(40) : i * step;
    list.push_back({start + offset, RandomValue(dice)});
  }
}

void AddBackwards(List& list, Dice& dice) {
  const std::uint32_t start = RandomStart(dice) + 60;
  const std::uint32_t length = 1 + dice.Below(60);
  for (std::uint32_t i = 0; i < length; ++i) {
    list.push_back({start - i, RandomValue(dice)});
  }
}

template <typename BetweenTwo>
void AddRegisters(List& list, Dice& dice, const BetweenTwo& between_two) {
  const std::uint32_t kind = dice.Below(10);
  if (kind < 6) {
    AddRun(list, dice, between_two);
  } else if (kind < 9) {
    AddScattered(list, dice);
  } else {
    AddBackwards(list, dice);
  }
}

// Slaves with the width code that their sensors want.
struct SlaveAndCode {
  std::uint32_t slave;
  std::uint32_t code;
};
constexpr std::array<SlaveAndCode, 6> kSensors = {
    {{0x20, 0}, {0x20, 1}, {0x30, 3}, {0x40, 4}, {0x120, 1}, {0xFFFFFF40, 4}}};
constexpr std::array<std::uint32_t, 7> kSlaves = {0x20, 0x30, 0x40, 0x55, 0xFF, 0xFFFFFFFF, 0x130};
constexpr std::array<std::uint32_t, 9> kCodes = {0, 1, 2, 3, 4, 5, 0x103, 0x80000004, 0xFFFFFFFF};

void AddI2cFiller(List& list, Dice& dice, Pauses pauses) {
  switch (dice.Below(3)) {
    case 0:
      list.push_back({0xFEF0, dice.Any()});
      break;
    case 1:
      list.push_back({0xFEF1, dice.Any()});
      break;
    default:
      list.push_back({0xFFFF, RandomPause(dice, pauses)});
      break;
  }
}

void AddI2cHead(List& list, Dice& dice, Pauses pauses) {
  const bool fits = dice.Percent(80);
  const SlaveAndCode sensor = kSensors[dice.Below(static_cast<std::uint32_t>(kSensors.size()))];
  list.push_back({0xFFF8, fits ? sensor.slave : dice.OneOf(kSlaves)});
  while (dice.Percent(20)) {
    AddI2cFiller(list, dice, pauses);
  }
  if (dice.Percent(10)) {
    return;
  }
  list.push_back({0xFFFE, fits ? sensor.code : dice.OneOf(kCodes)});
}

}  // namespace

List RandomRegisterList(std::uint32_t seed) {
  Dice dice(seed);
  List list;
  while (dice.Percent(10)) {
    list.push_back({0xFFFF, RandomPause(dice, Pauses::kNone)});
  }
  if (dice.Percent(95)) {
    list.push_back({0xFFFD, RandomValue(dice)});
  }
  if (dice.Percent(70)) {
    list.push_back({0xFFFE, RandomValue(dice)});
  }
  const auto mark = [&] { AddRegisterMark(list, dice); };
  for (std::uint32_t parts = dice.Below(7); parts > 0; --parts) {
    AddRegisters(list, dice, mark);
    if (dice.Percent(30)) {
      mark();
    }
  }
  for (borvan::ListEntry& entry : list) {
    if (entry.address == 0xFFFF && entry.value <= 255) {
      entry.value = 0;  // a run that came to this address must not sleep
    }
  }
  return list;
}

List RandomI2cList(std::uint32_t seed, Pauses pauses) {
  Dice dice(seed);
  List list;
  if (dice.Percent(97)) {
    AddI2cHead(list, dice, pauses);
  }
  const auto filler = [&] { AddI2cFiller(list, dice, pauses); };
  for (std::uint32_t parts = dice.Below(7); parts > 0; --parts) {
    AddRegisters(list, dice, filler);
    if (dice.Percent(25)) {
      filler();
    }
    if (dice.Percent(10)) {
      list.push_back({0xFFFE, RandomValue(dice)});  // no slave before it: a plain register
    }
    if (dice.Percent(40)) {
      AddI2cHead(list, dice, pauses);
    }
  }
  for (borvan::ListEntry& entry : list) {
    if (pauses == Pauses::kNone && entry.address == 0xFFFF && entry.value <= 255) {
      entry.value = 0;
    }
  }
  return list;
}

List RandomPlainRegisters(std::uint32_t seed, std::uint32_t lowest, std::uint32_t highest,
                          std::uint32_t largest) {
  Dice dice(seed);
  List list;
  const std::uint32_t span = highest - lowest + 1;
  for (std::uint32_t parts = 1 + dice.Below(5); parts > 0; --parts) {
    const std::uint32_t start = dice.Below(span);
    const std::uint32_t length = dice.OneOf(kLengths);
    for (std::uint32_t i = 0; i < length && start + i < span; ++i) {
      list.push_back({lowest + start + i, dice.Below(largest + 1)});
    }
  }
  return list;
}

}  // namespace borvan_test
