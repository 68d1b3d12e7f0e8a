#include "com/filter.h"

#include <algorithm>
#include <iterator>

#include "com/empty_pins.h"
#include "com/identifiers.h"
#include "com/node_control.h"

namespace virtual_camera {
namespace {

// The result if the configuration file does not contain the camera.
constexpr HRESULT kNoSuchCamera = HRESULT_FROM_WIN32(ERROR_DEVICE_NOT_CONNECTED);

// Receives a text from a property bag. The destructor frees it.
struct TextProperty {
  TextProperty() { value.vt = VT_BSTR; }
  TextProperty(const TextProperty&) = delete;
  TextProperty& operator=(const TextProperty&) = delete;
  ~TextProperty() { VariantClear(&value); }

  std::wstring Text() const {
    return value.vt == VT_BSTR && value.bstrVal != nullptr ? value.bstrVal : L"";
  }

  VARIANT value = {};
};

}  // namespace

HRESULT Filter::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  if (IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IPersist) ||
      IsEqualGUID(iid, IID_IMediaFilter) || IsEqualGUID(iid, IID_IBaseFilter)) {
    *object = static_cast<IBaseFilter*>(this);
  } else if (IsEqualGUID(iid, IID_IPersistPropertyBag)) {
    *object = static_cast<IPersistPropertyBag*>(this);
  } else if (IsEqualGUID(iid, kTopologyInfoId)) {
    *object = static_cast<IKsTopologyInfo*>(this);
  } else if (IsEqualGUID(iid, kKsControlId)) {
    *object = static_cast<IKsControl*>(this);
  } else {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  AddRef();
  return S_OK;
}

HRESULT Filter::GetClassID(CLSID* class_id) {
  if (class_id == nullptr) {
    return E_POINTER;
  }
  *class_id = kClassId;
  return S_OK;
}

HRESULT Filter::InitNew() {
  return S_OK;
}

HRESULT Filter::Load(IPropertyBag* bag, IErrorLog* log) {
  if (bag == nullptr) {
    return E_POINTER;
  }
  return Guarded([&]() -> HRESULT {
    TextProperty path;
    const HRESULT result = bag->Read(L"DevicePath", &path.value, log);
    if (FAILED(result)) {
      return result;
    }
    std::shared_ptr<Session> session = Session::Open(path.Text());
    if (!session) {
      return kNoSuchCamera;
    }
    const std::lock_guard lock(mutex_);
    session_ = std::move(session);
    return S_OK;
  });
}

HRESULT Filter::Save(IPropertyBag* /*bag*/, BOOL /*clear_dirty*/, BOOL /*save_all*/) {
  return E_NOTIMPL;
}

HRESULT Filter::Stop() {
  const std::lock_guard lock(mutex_);
  state_ = State_Stopped;
  return S_OK;
}

HRESULT Filter::Pause() {
  const std::lock_guard lock(mutex_);
  state_ = State_Paused;
  return S_OK;
}

HRESULT Filter::Run(REFERENCE_TIME /*start*/) {
  const std::lock_guard lock(mutex_);
  state_ = State_Running;
  return S_OK;
}

HRESULT Filter::GetState(DWORD /*timeout_ms*/, FILTER_STATE* state) {
  if (state == nullptr) {
    return E_POINTER;
  }
  const std::lock_guard lock(mutex_);
  *state = state_;
  // A live source delivers no data while it is paused. This result tells the graph not to wait.
  return state_ == State_Paused ? VFW_S_CANT_CUE : S_OK;
}

HRESULT Filter::SetSyncSource(IReferenceClock* clock) {
  ComPtr<IReferenceClock> exchanged = clock;
  // Releases the previous clock after the lock, because the release calls foreign code.
  const std::lock_guard lock(mutex_);
  clock_.Swap(exchanged);
  return S_OK;
}

HRESULT Filter::GetSyncSource(IReferenceClock** clock) {
  if (clock == nullptr) {
    return E_POINTER;
  }
  const std::lock_guard lock(mutex_);
  return clock_.CopyTo(clock);
}

HRESULT Filter::EnumPins(IEnumPins** pins) {
  if (pins == nullptr) {
    return E_POINTER;
  }
  *pins = new (std::nothrow) EmptyPins;
  return *pins != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT Filter::FindPin(LPCWSTR id, IPin** pin) {
  if (id == nullptr || pin == nullptr) {
    return E_POINTER;
  }
  *pin = nullptr;
  return VFW_E_NOT_FOUND;
}

HRESULT Filter::QueryFilterInfo(FILTER_INFO* info) {
  if (info == nullptr) {
    return E_POINTER;
  }
  const std::lock_guard lock(mutex_);
  const std::size_t length = std::min(name_in_graph_.size(), std::size(info->achName) - 1);
  std::copy_n(name_in_graph_.begin(), length, info->achName);
  info->achName[length] = L'\0';
  info->pGraph = graph_;
  if (graph_ != nullptr) {
    graph_->AddRef();
  }
  return S_OK;
}

HRESULT Filter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) {
  return Guarded([&]() -> HRESULT {
    std::wstring text = name != nullptr ? name : L"";
    const std::lock_guard lock(mutex_);
    graph_ = graph;
    name_in_graph_ = std::move(text);
    return S_OK;
  });
}

HRESULT Filter::QueryVendorInfo(LPWSTR* /*vendor*/) {
  return E_NOTIMPL;
}

std::shared_ptr<Session> Filter::CurrentSession() {
  const std::lock_guard lock(mutex_);
  return session_;
}

HRESULT Filter::get_NumCategories(DWORD* count) {
  if (count == nullptr) {
    return E_POINTER;
  }
  *count = Topology::CategoryCount();
  return S_OK;
}

HRESULT Filter::get_Category(DWORD index, GUID* category) {
  return Topology::Category(index, category);
}

HRESULT Filter::get_NumConnections(DWORD* count) {
  return WithTopology([&](const Topology& topology) -> HRESULT {
    if (count == nullptr) {
      return E_POINTER;
    }
    *count = topology.ConnectionCount();
    return S_OK;
  });
}

HRESULT Filter::get_ConnectionInfo(DWORD index, KSTOPOLOGY_CONNECTION* connection) {
  return WithTopology(
      [&](const Topology& topology) { return topology.Connection(index, connection); });
}

HRESULT Filter::get_NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes, DWORD* name_bytes) {
  return WithTopology([&](const Topology& topology) {
    return topology.NodeName(node_id, name, buffer_bytes, name_bytes);
  });
}

HRESULT Filter::get_NumNodes(DWORD* count) {
  return WithTopology([&](const Topology& topology) -> HRESULT {
    if (count == nullptr) {
      return E_POINTER;
    }
    *count = topology.NodeCount();
    return S_OK;
  });
}

HRESULT Filter::get_NodeType(DWORD node_id, GUID* type) {
  return WithTopology([&](const Topology& topology) { return topology.NodeTypeOf(node_id, type); });
}

HRESULT Filter::CreateNodeInstance(DWORD node_id, REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  return Guarded([&]() -> HRESULT {
    const std::shared_ptr<Session> session = CurrentSession();
    if (!session) {
      return E_UNEXPECTED;
    }
    if (node_id >= session->Nodes().size()) {
      return E_INVALIDARG;
    }
    const ComPtr<NodeControl> node = Owned(new NodeControl(session));
    return node->QueryInterface(iid, object);
  });
}

HRESULT Filter::KsProperty(PKSPROPERTY property, ULONG property_bytes, void* data, ULONG data_bytes,
                           ULONG* bytes_returned) {
  return Guarded([&]() -> HRESULT {
    const std::shared_ptr<Session> session = CurrentSession();
    return session ? session->Property(property, property_bytes, data, data_bytes, bytes_returned)
                   : E_UNEXPECTED;
  });
}

HRESULT Filter::KsMethod(PKSMETHOD /*method*/, ULONG /*method_bytes*/, void* /*data*/,
                         ULONG /*data_bytes*/, ULONG* /*bytes_returned*/) {
  return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
}

HRESULT Filter::KsEvent(PKSEVENT /*event*/, ULONG /*event_bytes*/, void* /*data*/,
                        ULONG /*data_bytes*/, ULONG* /*bytes_returned*/) {
  return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
}

}  // namespace virtual_camera
