#pragma once

#include <memory>

#include "com/com_object.h"
#include "com/kernel_streaming.h"
#include "com/session.h"

namespace virtual_camera {

// IKsControl of one node of the camera.
class NodeControl final : public ComObject<IKsControl> {
 public:
  explicit NodeControl(std::shared_ptr<Session> session) : session_(std::move(session)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG property_bytes, void* data,
                                       ULONG data_bytes, ULONG* bytes_returned) override;
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG method_bytes, void* data,
                                     ULONG data_bytes, ULONG* bytes_returned) override;
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG event_bytes, void* data, ULONG data_bytes,
                                    ULONG* bytes_returned) override;

 private:
  const std::shared_ptr<Session> session_;
};

}  // namespace virtual_camera
