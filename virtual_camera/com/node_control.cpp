#include "com/node_control.h"

#include "com/identifiers.h"

namespace virtual_camera {

HRESULT NodeControl::QueryInterface(REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  if (!IsEqualGUID(iid, IID_IUnknown) && !IsEqualGUID(iid, kKsControlId)) {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  *object = static_cast<IKsControl*>(this);
  AddRef();
  return S_OK;
}

HRESULT NodeControl::KsProperty(PKSPROPERTY property, ULONG property_bytes, void* data,
                                ULONG data_bytes, ULONG* bytes_returned) {
  return Guarded([&] {
    return session_->Property(property, property_bytes, data, data_bytes, bytes_returned);
  });
}

// A camera's nodes have no methods and no events.
HRESULT NodeControl::KsMethod(PKSMETHOD /*method*/, ULONG /*method_bytes*/, void* /*data*/,
                              ULONG /*data_bytes*/, ULONG* /*bytes_returned*/) {
  return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
}

HRESULT NodeControl::KsEvent(PKSEVENT /*event*/, ULONG /*event_bytes*/, void* /*data*/,
                             ULONG /*data_bytes*/, ULONG* /*bytes_returned*/) {
  return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
}

}  // namespace virtual_camera
