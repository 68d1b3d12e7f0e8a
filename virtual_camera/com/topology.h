#pragma once

#include <string_view>
#include <vector>

#include "com/kernel_streaming.h"
#include "core/configuration.h"

namespace virtual_camera {

// The topology that IKsTopologyInfo returns: the nodes of the camera, in a chain from the input of
// the filter to its output.
class Topology {
 public:
  explicit Topology(std::vector<NodeType> nodes) : nodes_(std::move(nodes)) {}

  DWORD NodeCount() const { return static_cast<DWORD>(nodes_.size()); }
  // The following functions return E_INVALIDARG if an argument is out of range.
  HRESULT NodeTypeOf(DWORD node_id, GUID* type) const;
  // Copies the name with its terminator. `name_bytes` always receives the size of the name. Returns
  // 0x800700EA if `buffer_bytes` is too small.
  HRESULT NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes, DWORD* name_bytes) const;

  DWORD ConnectionCount() const { return NodeCount() + 1; }
  HRESULT Connection(DWORD index, KSTOPOLOGY_CONNECTION* connection) const;

  static DWORD CategoryCount();
  static HRESULT Category(DWORD index, GUID* category);

 private:
  std::vector<NodeType> nodes_;
};

}  // namespace virtual_camera
