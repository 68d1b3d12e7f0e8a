// The vendor extension unit of a capture filter, through kernel streaming.

#include <windows.h>
#include <wrl/client.h>

#include <strmif.h>

#include <ks.h>
#include <ksproxy.h>

#include "device/directshow_interfaces.h"
#include "device/ks_topology.h"
#include "device/windows_platform.h"

namespace borvan {
namespace {

using Microsoft::WRL::ComPtr;

static_assert(sizeof(KSP_NODE) == sizeof(NodePropertyRequest));

class KsNodeControl : public ExtensionUnitControl {
 public:
  KsNodeControl(ComPtr<IBaseFilter> filter, ComPtr<IKsControl> control)
      : filter_(std::move(filter)), control_(std::move(control)) {}

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override {
    // The driver's interface takes the request as writable.
    NodePropertyRequest record = request;
    ULONG returned = 0;
    const Result result = control_->KsProperty(reinterpret_cast<PKSPROPERTY>(&record),
                                               sizeof(record), data, length, &returned);
    bytes_returned = returned;
    return result;
  }

 private:
  // The node lives only as long as its filter. Members are released last to first.
  const ComPtr<IBaseFilter> filter_;
  const ComPtr<IKsControl> control_;
};

}  // namespace

void WindowsPlatform::OpenVendorNodes(VideoInputMoniker* moniker, const VendorNodeHandler& keep) {
  ComPtr<IBaseFilter> filter;
  if (moniker != nullptr) {
    IMoniker* const device = static_cast<WindowsMoniker*>(moniker)->Get();
    static_cast<void>(device->BindToObject(nullptr, nullptr, kIidBaseFilter,
                                           reinterpret_cast<void**>(filter.GetAddressOf())));
  }
  if (filter == nullptr) {
    throw "ERROR: gcap.pmVideo->BindToObject failed";
  }

  ComPtr<IKsTopologyInfo> topology;
  if (FAILED(filter->QueryInterface(kIidKsTopologyInfo,
                                    reinterpret_cast<void**>(topology.GetAddressOf()))) ||
      topology == nullptr) {
    throw "ERROR: gcap.pVCap->QueryInterface failed";
  }

  DWORD node_count = 0;
  if (topology->get_NumNodes(&node_count) != S_OK) {
    throw "ERROR: pKsTopologyInfo->get_NumNodes(&uiNumNodes) == S_OK failed";
  }

  // Deliberately one id more than there are nodes, for a filter whose ids begin at 1. The query for
  // an id that does not exist fails and is skipped.
  for (std::uint64_t id = 0; id <= node_count; ++id) {
    const auto node_id = static_cast<DWORD>(id);
    GUID node_type = {};
    if (topology->get_NodeType(node_id, &node_type) != S_OK ||
        !IsEqualGUID(node_type, kKsNodeTypeDevSpecific)) {
      continue;
    }
    ComPtr<IUnknown> node;
    if (topology->CreateNodeInstance(node_id, kIidUnknown,
                                     reinterpret_cast<void**>(node.GetAddressOf())) != S_OK ||
        node == nullptr) {
      throw "ERROR: create node instance failed for KSNODETYPE_DEV_SPECIFIC!";
    }
    ComPtr<IKsControl> control;
    if (node->QueryInterface(kIidKsControl, reinterpret_cast<void**>(control.GetAddressOf())) !=
            S_OK ||
        control == nullptr) {
      throw "ERROR: pUnk->QueryInterface failed for KSNODETYPE_DEV_SPECIFIC!";
    }
    keep(std::make_shared<KsNodeControl>(filter, std::move(control)), node_id);
  }
}

}  // namespace borvan
