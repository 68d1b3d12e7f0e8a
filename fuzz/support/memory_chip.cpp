#include "support/memory_chip.h"

#include <algorithm>
#include <string>

#include "support/check.h"

namespace borvan_fuzz {

MemoryChip::MemoryChip() {
  configuration.flash.size = kFlashSize;
  configuration.flash.file = file_.Path();
  flash_ = std::make_unique<virtual_camera::NorFlash>(configuration.flash);
}

void MemoryChip::FillFlash(std::uint8_t byte) {
  file_.Put(std::vector<std::uint8_t>(kFlashSize, byte));
}

void MemoryChip::Take(std::uint32_t selector, std::span<const std::uint8_t> block) {
  virtual_camera::Chip chip(configuration, state_, *flash_);
  Check(chip.Execute(selector, block, {}) == 0,
        "the chip does not understand a block on selector " + std::to_string(selector));
}

virtual_camera::Reply MemoryChip::TakeReply(std::uint32_t selector) {
  virtual_camera::Reply& waiting = state_.fields.replies[selector - 1];
  const virtual_camera::Reply reply = waiting;
  if (waiting.has_second) {
    std::copy(waiting.second.begin(), waiting.second.end(), waiting.bytes.begin());
    waiting.has_second = false;
  }
  return reply;
}

std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> MemoryChip::Written() const {
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> registers;
  for (const auto& [key, value] : state_.registers.Values()) {
    registers[{static_cast<std::uint32_t>(key >> 32), static_cast<std::uint32_t>(key)}] = value;
  }
  return registers;
}

}  // namespace borvan_fuzz
