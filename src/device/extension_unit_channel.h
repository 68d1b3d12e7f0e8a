#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "base/result.h"
#include "base/short_lock.h"
#include "device/extension_unit_control.h"

namespace borvan {

// The vendor extension unit's property set {DD880F8A-1CBA-4954-8A25-F7875967F0F7}, in the memory
// layout of a GUID.
constexpr std::array<std::uint8_t, 16> kExtensionUnitGuid = {
    0x8A, 0x0F, 0x88, 0xDD, 0xBA, 0x1C, 0x54, 0x49, 0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7};

// The path from the device object to the selected camera's vendor extension unit. Transfers of
// several threads may overlap and interleave; each is complete in itself.
class ExtensionUnitChannel {
 public:
  // Uses `control` for the following transfers. Releases the previous control as soon as no
  // transfer uses it any more.
  void Open(std::shared_ptr<ExtensionUnitControl> control, std::uint32_t node_id);

  void Close();

  bool IsOpen() const;

  // The node id found at opening. Transfers don't use it: the unit answers at node 2.
  std::uint32_t NodeId() const;

  // Queries the data length of `selector`. The device reports success as "more data"; any other
  // result is returned unchanged and leaves *length untouched.
  Result GetLength(std::uint32_t selector, std::uint32_t* length) const;

  // Writes `length` bytes of `buffer` to the control. Returns the device's result, or kNullPointer
  // without a channel or buffer.
  Result Set(std::uint32_t selector, std::uint32_t length, void* buffer) const;

  // Reads `length` bytes of the control into `buffer`; results as for Set.
  Result Get(std::uint32_t selector, std::uint32_t length, void* buffer) const;

  // Gives up the control without releasing it; it then lasts until the process ends.
  std::shared_ptr<ExtensionUnitControl> Abandon();

 private:
  std::shared_ptr<ExtensionUnitControl> Control() const;

  mutable ShortLock lock_;  // held to copy or exchange the pointer, never during a transfer
  std::shared_ptr<ExtensionUnitControl> control_;
  std::uint32_t node_id_ = 0;
};

}  // namespace borvan
