#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "core/chip.h"
#include "support/memory_file.h"

namespace borvan_fuzz {

// The virtual camera's chip without files and without the host around it.
class MemoryChip {
 public:
  static constexpr std::uint32_t kFlashSize = 64 * 1024;

  MemoryChip();

  // To be changed before the first block.
  virtual_camera::CameraConfiguration configuration;

  // Freshly powered; the flash stays.
  void Restart() { state_ = {}; }

  void FillFlash(std::uint8_t byte);

  // Hands a block over. Fails the property unless the chip takes it.
  void Take(std::uint32_t selector, std::span<const std::uint8_t> block);

  // What the next get on a selector answers, and takes it.
  virtual_camera::Reply TakeReply(std::uint32_t selector);

  // Register (0 for the chip, 1 + slave for a sensor; its address) and value, as written.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> Written() const;

  std::vector<std::uint8_t> Flash() const { return file_.Content(); }

 private:
  MemoryFile file_;
  virtual_camera::DeviceState state_;
  std::unique_ptr<virtual_camera::NorFlash> flash_;
};

}  // namespace borvan_fuzz
