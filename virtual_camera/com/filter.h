#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "com/com_object.h"
#include "com/kernel_streaming.h"
#include "com/session.h"
#include "com/topology.h"

namespace virtual_camera {

// The capture filter that a device moniker of the virtual camera binds to. It has the topology and
// the extension unit of a USB camera and can be added to a filter graph, but it has no pins,
// because the virtual camera delivers no picture.
class Filter final
    : public ComObject<IBaseFilter, IPersistPropertyBag, IKsTopologyInfo, IKsControl> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

  // IPersist, IPersistPropertyBag
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* class_id) override;
  HRESULT STDMETHODCALLTYPE InitNew() override;
  HRESULT STDMETHODCALLTYPE Load(IPropertyBag* bag, IErrorLog* log) override;
  HRESULT STDMETHODCALLTYPE Save(IPropertyBag* bag, BOOL clear_dirty, BOOL save_all) override;

  // IMediaFilter, IBaseFilter
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD timeout_ms, FILTER_STATE* state) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* vendor) override;

  // IKsTopologyInfo; E_UNEXPECTED before Load.
  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) override;
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index,
                                               KSTOPOLOGY_CONNECTION* connection) override;
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes,
                                         DWORD* name_bytes) override;
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node_id, GUID* type) override;
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node_id, REFIID iid, void** object) override;

  // IKsControl
  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG property_bytes, void* data,
                                       ULONG data_bytes, ULONG* bytes_returned) override;
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG method_bytes, void* data,
                                     ULONG data_bytes, ULONG* bytes_returned) override;
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG event_bytes, void* data, ULONG data_bytes,
                                    ULONG* bytes_returned) override;

 private:
  std::shared_ptr<Session> CurrentSession();

  // Returns the result of `question` for the camera's topology, or E_UNEXPECTED without a camera.
  template <class Question>
  HRESULT WithTopology(Question question) {
    return Guarded([&]() -> HRESULT {
      const std::shared_ptr<Session> session = CurrentSession();
      return session ? question(Topology(session->Nodes())) : E_UNEXPECTED;
    });
  }

  std::mutex mutex_;  // guards what follows
  std::shared_ptr<Session> session_;
  FILTER_STATE state_ = State_Stopped;
  ComPtr<IReferenceClock> clock_;
  // Not a counted reference: the graph owns its filters, so a reference to the graph would keep
  // both alive forever.
  IFilterGraph* graph_ = nullptr;
  std::wstring name_in_graph_;
};

}  // namespace virtual_camera
