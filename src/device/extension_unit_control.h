#pragma once

#include <array>
#include <cstdint>

#include "base/result.h"

namespace borvan {

// The request record of a node property (KSP_NODE of the Windows SDK, ks.h): 32 bytes.
struct NodePropertyRequest {
  std::array<std::uint8_t, 16> set{};  // property set, in the memory layout of a GUID
  std::uint32_t id = 0;                // the control selector
  std::uint32_t flags = 0;
  std::uint32_t node_id = 0;
  std::uint32_t reserved = 0;
};
static_assert(sizeof(NodePropertyRequest) == 32);

// The kernel-streaming control of one camera's vendor node (IKsControl of the Windows SDK).
class ExtensionUnitControl {
 public:
  ExtensionUnitControl() = default;
  ExtensionUnitControl(const ExtensionUnitControl&) = delete;
  ExtensionUnitControl& operator=(const ExtensionUnitControl&) = delete;
  virtual ~ExtensionUnitControl() = default;

  // Makes one property request. The device reads or fills the `length` bytes of `data`, as the
  // flags of the request say. `bytes_returned` receives the number of bytes that the device says it
  // moved, or would move.
  virtual Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                            std::uint32_t& bytes_returned) = 0;
};

}  // namespace borvan
