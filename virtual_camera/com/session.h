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

// Shared by the filter and the node objects of an open camera. Contains the camera and answers
// kernel-streaming requests like the Windows driver for USB cameras.
class Session {
 public:
  // Opens the camera with this device path from the configuration file. Returns null if the file
  // has no such camera. Throws ConfigurationError if the file or the camera's own files can't be
  // used.
  static std::shared_ptr<Session> Open(const std::wstring& device_path);

  Session(Configuration configuration, std::size_t position);

  const std::vector<NodeType>& Nodes() const { return Own().nodes; }

  // Handles a property request on the extension unit, in the form of IKsControl::KsProperty. Uses
  // the node in the request, even if the request was made on the object of another node.
  HRESULT Property(const KSPROPERTY* property, ULONG property_bytes, void* data, ULONG data_bytes,
                   ULONG* bytes_returned);

 private:
  const CameraConfiguration& Own() const { return configuration_.cameras.at(position_); }

  const Configuration configuration_;
  const std::size_t position_;
  Camera camera_;
};

}  // namespace virtual_camera
