#include "sweep/contents.h"

#include <algorithm>
#include <random>
#include <string_view>

namespace borvanusb::sweep {
namespace {

constexpr std::uint32_t kFirstRegister = 0x100;
constexpr std::uint32_t kRegisters = 0x200;

}  // namespace

Bytes RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
  return bytes;
}

Bytes RepeatingBytes(std::size_t size) {
  constexpr std::string_view kLine =
      "sensor mode table: 1920x1080 at 30 frames a second, 10 bits; \r\n";
  static_assert(kLine.size() < 64 + 1);
  constexpr std::size_t kBlock = 64;
  constexpr std::size_t kTimes = 5;
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t block = i / kBlock;
    const std::size_t at = i % kBlock;
    bytes[i] = at < kLine.size() ? static_cast<std::uint8_t>(kLine[at]) : ' ';
    // A number that changes after some repetitions.
    if (at == 0) {
      bytes[i] = static_cast<std::uint8_t>('0' + block / kTimes % 10);
    }
  }
  return bytes;
}

std::vector<NamedBytes> FlashContents() {
  return {{"random", RandomBytes(kFlashSize, 1)},
          {"blank", Bytes(kFlashSize, 0xFF)},
          {"all zeros", Bytes(kFlashSize, 0x00)},
          {"text with repeats", RepeatingBytes(kFlashSize)}};
}

Content CameraWith(const Bytes& flash) {
  Content content;
  content.flash = flash;
  const Bytes values = RandomBytes(kRegisters, 2);
  for (std::uint32_t i = 0; i < kRegisters; ++i) {
    content.registers[kFirstRegister + i] = values[i];
  }
  return content;
}

Bytes Part(const Bytes& bytes, std::size_t offset, std::size_t size) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  return {begin, begin + static_cast<std::ptrdiff_t>(size)};
}

Bytes Overlaid(Bytes bytes, std::size_t offset, const Bytes& part) {
  std::ranges::copy(part, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
  return bytes;
}

std::string Difference(const Bytes& wanted, const Bytes& found) {
  if (wanted == found) {
    return "equal";
  }
  if (wanted.size() != found.size()) {
    return std::to_string(found.size()) + " bytes instead of " + std::to_string(wanted.size());
  }
  std::size_t count = 0;
  std::size_t first = wanted.size();
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] != found[i]) {
      first = std::min(first, i);
      ++count;
    }
  }
  return std::to_string(count) + " bytes differ, the first at offset " + std::to_string(first);
}

}  // namespace borvanusb::sweep
