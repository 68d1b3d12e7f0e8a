#pragma once

#include <windows.h>
// windows.h must come first.
#include <ks.h>

#include <cstddef>
#include <memory>
#include <string>

#include "core/camera.h"
#include "core/configuration.h"

namespace virtual_camera {

// What the filter and the node objects of one opening share: the camera, and the kernel-streaming
// answers that Windows's driver for USB cameras gives in front of it.
class Session {
 public:
  // Opens the camera with this device path from the configuration file. Null when the file has no
  // such camera; ConfigurationError when the file or the camera's own files can't be used.
  static std::shared_ptr<Session> Open(const std::wstring& device_path);

  Session(Configuration configuration, std::size_t position);

  const std::vector<NodeType>& Nodes() const { return Own().nodes; }

  // A property request on the extension unit, as IKsControl::KsProperty takes it. The node in the
  // request counts, whichever node's object it came through.
  HRESULT Property(const KSPROPERTY* property, ULONG property_bytes, void* data, ULONG data_bytes,
                   ULONG* bytes_returned);

 private:
  const CameraConfiguration& Own() const { return configuration_.cameras.at(position_); }

  const Configuration configuration_;
  const std::size_t position_;
  Camera camera_;
};

}  // namespace virtual_camera
