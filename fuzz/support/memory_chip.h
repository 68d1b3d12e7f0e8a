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

// The virtual camera's chip without files and without its host.
class MemoryChip {
 public:
  static constexpr std::uint32_t kFlashSize = 64 * 1024;

  MemoryChip();

  // May be changed until the first block.
  virtual_camera::CameraConfiguration configuration;

  // Restarts the chip. The flash is kept.
  void Restart() { state_ = {}; }

  void FillFlash(std::uint8_t byte);

  // Sends a block. Fails the property unless the chip accepts it.
  void Take(std::uint32_t selector, std::span<const std::uint8_t> block);

  // Takes the answer to the next get on a selector.
  virtual_camera::Reply TakeReply(std::uint32_t selector);

  // The written registers (0 for the chip, 1 + slave for a sensor; and the address) with their
  // values.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> Written() const;

  std::vector<std::uint8_t> Flash() const { return file_.Content(); }

 private:
  MemoryFile file_;
  virtual_camera::DeviceState state_;
  std::unique_ptr<virtual_camera::NorFlash> flash_;
};

}  // namespace borvan_fuzz
