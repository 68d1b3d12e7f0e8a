#pragma once

#include <string_view>
#include <vector>

#include "com/kernel_streaming.h"
#include "core/configuration.h"

namespace virtual_camera {

// The description of a camera's inside that IKsTopologyInfo gives: its nodes in a chain from the
// filter's input to its output.
class Topology {
 public:
  explicit Topology(std::vector<NodeType> nodes) : nodes_(std::move(nodes)) {}

  DWORD NodeCount() const { return static_cast<DWORD>(nodes_.size()); }
  // Each of the following has an argument out of range answered with E_INVALIDARG.
  HRESULT NodeTypeOf(DWORD node_id, GUID* type) const;
  // Copies the name with its terminator; `name_bytes` gets its size even when `buffer_bytes` is too
  // small, which is answered with 0x800700EA.
  HRESULT NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes, DWORD* name_bytes) const;

  DWORD ConnectionCount() const { return NodeCount() + 1; }
  HRESULT Connection(DWORD index, KSTOPOLOGY_CONNECTION* connection) const;

  static DWORD CategoryCount();
  static HRESULT Category(DWORD index, GUID* category);

 private:
  std::vector<NodeType> nodes_;
};

}  // namespace virtual_camera
