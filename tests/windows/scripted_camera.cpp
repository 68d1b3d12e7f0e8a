#include "scripted_camera.h"

#include <cstddef>
#include <utility>

namespace test {
namespace {

// Hands out `object` with a reference of its own.
template <class Object>
void HandOut(Object& object, void** receiver) {
  object.AddRef();
  *receiver = &object;
}

}  // namespace

HRESULT ScriptedControl::QueryInterface(REFIID /*iid*/, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT ScriptedControl::KsProperty(PKSPROPERTY property, ULONG property_length, void* data,
                                    ULONG length, ULONG* returned) {
  Transfer transfer;
  const auto* const request = reinterpret_cast<const std::uint8_t*>(property);
  transfer.request.assign(request, request + property_length);
  transfer.data = data;
  transfer.length = length;
  transfer.count_wanted = returned != nullptr;
  if (data != nullptr) {
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    transfer.bytes.assign(bytes, bytes + length);
  }
  Answer answer;
  {
    const std::lock_guard lock(mutex_);
    transfers_.push_back(std::move(transfer));
    answer = answer_;
  }
  if (answer) {
    return answer(data, length, returned);
  }
  if (data == nullptr) {
    *returned = 64;
    return kMoreData;
  }
  *returned = 0;
  return S_OK;
}

HRESULT ScriptedControl::KsMethod(PKSMETHOD /*method*/, ULONG /*method_length*/, void* /*data*/,
                                  ULONG /*length*/, ULONG* /*returned*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedControl::KsEvent(PKSEVENT /*event*/, ULONG /*event_length*/, void* /*data*/,
                                 ULONG /*length*/, ULONG* /*returned*/) {
  return E_NOTIMPL;
}

void ScriptedControl::SetAnswer(Answer answer) {
  const std::lock_guard lock(mutex_);
  answer_ = std::move(answer);
}

std::vector<Transfer> ScriptedControl::Transfers() const {
  const std::lock_guard lock(mutex_);
  return transfers_;
}

void ScriptedControl::ForgetTransfers() {
  const std::lock_guard lock(mutex_);
  transfers_.clear();
}

HRESULT ScriptedNode::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (!IsEqualGUID(iid, kKsControlId)) {
    return E_NOINTERFACE;
  }
  if (SUCCEEDED(query_result)) {
    HandOut(control, object);
  }
  return query_result;
}

HRESULT ScriptedTopology::QueryInterface(REFIID /*iid*/, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT ScriptedTopology::get_NumCategories(DWORD* /*count*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedTopology::get_Category(DWORD /*index*/, GUID* /*category*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedTopology::get_NumConnections(DWORD* /*count*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedTopology::get_ConnectionInfo(DWORD /*index*/, void* /*connection*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedTopology::get_NodeName(DWORD /*id*/, WCHAR* /*name*/, DWORD /*size*/,
                                       DWORD* /*length*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedTopology::get_NumNodes(DWORD* count) {
  *count = static_cast<DWORD>(nodes.size()) - uncounted_nodes;
  return count_result;
}

HRESULT ScriptedTopology::get_NodeType(DWORD id, GUID* type) {
  type_queries.push_back(id);
  if (id >= nodes.size()) {
    return E_INVALIDARG;
  }
  *type = nodes[id]->type;
  return nodes[id]->type_result;
}

HRESULT ScriptedTopology::CreateNodeInstance(DWORD id, REFIID iid, void** object) {
  *object = nullptr;
  if (id >= nodes.size() || !IsEqualGUID(iid, kUnknownId)) {
    return E_INVALIDARG;
  }
  ScriptedNode& node = *nodes[id];
  ++node.times_created;
  if (SUCCEEDED(node.create_result)) {
    HandOut(node, object);
  }
  return node.create_result;
}

HRESULT ScriptedFilter::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (!IsEqualGUID(iid, kTopologyInfoId)) {
    return E_NOINTERFACE;
  }
  if (SUCCEEDED(query_result)) {
    HandOut(topology, object);
  }
  return query_result;
}

HRESULT ScriptedFilter::GetClassID(CLSID* /*id*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::Stop() {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::Pause() {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::Run(REFERENCE_TIME /*start*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::GetState(DWORD /*timeout*/, FILTER_STATE* /*state*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::SetSyncSource(IReferenceClock* /*clock*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::GetSyncSource(IReferenceClock** /*clock*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::EnumPins(IEnumPins** /*pins*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::FindPin(LPCWSTR /*id*/, IPin** /*pin*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::QueryFilterInfo(FILTER_INFO* /*info*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::JoinFilterGraph(IFilterGraph* /*graph*/, LPCWSTR /*name*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedFilter::QueryVendorInfo(LPWSTR* /*info*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::QueryInterface(REFIID /*iid*/, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

HRESULT ScriptedMoniker::GetClassID(CLSID* /*id*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::IsDirty() {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Load(IStream* /*stream*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Save(IStream* /*stream*/, BOOL /*clear_dirty*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::GetSizeMax(ULARGE_INTEGER* /*size*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::BindToObject(IBindCtx* context, IMoniker* left, REFIID iid,
                                      void** object) {
  ++binds;
  bound_alone = bound_alone && context == nullptr && left == nullptr;
  *object = nullptr;
  if (!IsEqualGUID(iid, kBaseFilterId)) {
    return E_NOINTERFACE;
  }
  if (gives_filter) {
    HandOut(filter, object);
  }
  return bind_result;
}

HRESULT ScriptedMoniker::BindToStorage(IBindCtx* /*context*/, IMoniker* /*left*/, REFIID /*iid*/,
                                       void** /*object*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Reduce(IBindCtx* /*context*/, DWORD /*how*/, IMoniker** /*left*/,
                                IMoniker** /*reduced*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::ComposeWith(IMoniker* /*right*/, BOOL /*only_if_not_generic*/,
                                     IMoniker** /*composite*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Enum(BOOL /*forward*/, IEnumMoniker** /*monikers*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::IsEqual(IMoniker* /*other*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Hash(DWORD* /*hash*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::IsRunning(IBindCtx* /*context*/, IMoniker* /*left*/,
                                   IMoniker* /*newly_running*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::GetTimeOfLastChange(IBindCtx* /*context*/, IMoniker* /*left*/,
                                             FILETIME* /*time*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::Inverse(IMoniker** /*inverse*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::CommonPrefixWith(IMoniker* /*other*/, IMoniker** /*prefix*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::RelativePathTo(IMoniker* /*other*/, IMoniker** /*path*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::GetDisplayName(IBindCtx* /*context*/, IMoniker* /*left*/,
                                        LPOLESTR* /*name*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::ParseDisplayName(IBindCtx* /*context*/, IMoniker* /*left*/,
                                          LPOLESTR /*name*/, ULONG* /*eaten*/,
                                          IMoniker** /*moniker*/) {
  return E_NOTIMPL;
}

HRESULT ScriptedMoniker::IsSystemMoniker(DWORD* /*kind*/) {
  return E_NOTIMPL;
}

ScriptedNode& ScriptedCamera::AddNode(const GUID& type) {
  return *Topology().nodes.emplace_back(std::make_unique<ScriptedNode>(type));
}

}  // namespace test
