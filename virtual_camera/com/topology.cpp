#include "com/topology.h"

#include <array>
#include <cstring>

#include "com/identifiers.h"

namespace virtual_camera {
namespace {

struct NodeDescription {
  NodeType type;
  GUID id;
  std::wstring_view name;
};

constexpr std::array<NodeDescription, 5> kNodes = {{
    {NodeType::kCameraTerminal, kCameraTerminalNode, L"Camera Terminal"},
    {NodeType::kProcessing, kProcessingNode, L"Video Processing"},
    {NodeType::kSelector, kSelectorNode, L"Video Selector"},
    {NodeType::kStreaming, kStreamingNode, L"Video Streaming"},
    {NodeType::kVendor, kVendorNode, L"Device Specific"},
}};

constexpr std::array<GUID, 2> kCategories = {kVideoCategory, kCaptureCategory};

const NodeDescription& Describe(NodeType type) {
  for (const NodeDescription& node : kNodes) {
    if (node.type == type) {
      return node;
    }
  }
  return kNodes.back();
}

}  // namespace

HRESULT Topology::NodeTypeOf(DWORD node_id, GUID* type) const {
  if (type == nullptr) {
    return E_POINTER;
  }
  if (node_id >= NodeCount()) {
    return E_INVALIDARG;
  }
  *type = Describe(nodes_[node_id]).id;
  return S_OK;
}

HRESULT Topology::NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes,
                           DWORD* name_bytes) const {
  if (name_bytes == nullptr || (name == nullptr && buffer_bytes != 0)) {
    return E_POINTER;
  }
  if (node_id >= NodeCount()) {
    return E_INVALIDARG;
  }
  const std::wstring_view text = Describe(nodes_[node_id]).name;
  const std::size_t text_bytes = text.size() * sizeof(WCHAR);
  *name_bytes = static_cast<DWORD>(text_bytes + sizeof(WCHAR));
  if (name == nullptr || buffer_bytes < *name_bytes) {
    return HRESULT_FROM_WIN32(ERROR_MORE_DATA);
  }
  std::memcpy(name, text.data(), text_bytes);
  name[text.size()] = L'\0';
  return S_OK;
}

HRESULT Topology::Connection(DWORD index, KSTOPOLOGY_CONNECTION* connection) const {
  if (connection == nullptr) {
    return E_POINTER;
  }
  if (index >= ConnectionCount()) {
    return E_INVALIDARG;
  }
  // Pin 0 of a node is its output, pin 1 its input.
  connection->FromNode = index == 0 ? KSFILTER_NODE : index - 1;
  connection->FromNodePin = 0;
  connection->ToNode = index == NodeCount() ? KSFILTER_NODE : index;
  connection->ToNodePin = 1;
  return S_OK;
}

DWORD Topology::CategoryCount() {
  return static_cast<DWORD>(kCategories.size());
}

HRESULT Topology::Category(DWORD index, GUID* category) {
  if (category == nullptr) {
    return E_POINTER;
  }
  if (index >= CategoryCount()) {
    return E_INVALIDARG;
  }
  *category = kCategories[index];
  return S_OK;
}

}  // namespace virtual_camera
