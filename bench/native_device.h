#pragma once

// The library's device object, natively, over a flash in memory.

#include <cstdint>
#include <memory>
#include <span>

#include "device/extension_unit_control.h"
#include "memory_flash.h"
#include "protocol/borvan_usb_q7.h"
#include "transfer_script.h"

namespace bench {

class MemoryControl : public borvan::ExtensionUnitControl {
 public:
  explicit MemoryControl(std::size_t flash_size) : flash_(flash_size) {}

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override;

  MemoryFlash& Flash() { return flash_; }

 private:
  MemoryFlash flash_;
};

// A device object whose one camera has `control` and is selected.
std::shared_ptr<borvan::BorvanUsb_Q7> MakeSelectedDevice(std::shared_ptr<MemoryControl> control);

// The bare loop: calls `control` for each transfer of the script. The answers' sum keeps the
// compiler from leaving the calls out, and is 0 when all went well.
std::int64_t RunScript(borvan::ExtensionUnitControl& control,
                       std::span<const ScriptedTransfer> script);

}  // namespace bench
