#include "com/session.h"

#include <cstring>
#include <optional>
#include <span>
#include <utility>

#include "com/configuration_file.h"
#include "com/identifiers.h"
#include "com/plugging.h"
#include "core/wide_text.h"

namespace virtual_camera {

std::shared_ptr<Session> Session::Open(const std::wstring& device_path) {
  Configuration configuration = LoadConfiguration(ConfigurationFile());
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    if (SamePath(WideOf(configuration.cameras[position].path), device_path)) {
      const std::string trace = ProcessTraceFile();
      CheckProcessTrace(configuration, trace);
      SyncEntries(configuration);
      configuration.cameras[position].process_trace_file = trace;
      return std::make_shared<Session>(std::move(configuration), position);
    }
  }
  return nullptr;
}

Session::Session(Configuration configuration, std::size_t position)
    : configuration_(std::move(configuration)), position_(position), camera_(Own()) {
  camera_.on_unplug = [this](std::optional<std::uint32_t> back_after_ms) {
    FollowFall(configuration_, position_, back_after_ms);
  };
}

HRESULT Session::Property(const KSPROPERTY* property, ULONG property_bytes, void* data,
                          ULONG data_bytes, ULONG* bytes_returned) {
  if (property == nullptr || bytes_returned == nullptr || (data == nullptr && data_bytes != 0)) {
    return E_POINTER;
  }
  *bytes_returned = 0;
  if (property_bytes < sizeof(KSPROPERTY)) {
    return E_INVALIDARG;
  }
  // The request may be at any address, so its fields are copied.
  KSP_NODE request = {};
  std::memcpy(&request, property, sizeof(KSPROPERTY));
  if ((request.Property.Flags & KSPROPERTY_TYPE_TOPOLOGY) == 0) {
    // The extension unit's set belongs to its node; the filter itself has no property sets.
    return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
  }
  if (property_bytes < sizeof(KSP_NODE)) {
    return E_INVALIDARG;
  }
  std::memcpy(&request, property, sizeof(KSP_NODE));
  if (request.NodeId >= Nodes().size()) {
    return HRESULT_FROM_WIN32(ERROR_INVALID_FUNCTION);
  }
  if (Nodes()[request.NodeId] != NodeType::kVendor ||
      !IsEqualGUID(request.Property.Set, kExtensionUnitSet)) {
    return HRESULT_FROM_WIN32(ERROR_SET_NOT_FOUND);
  }

  const ULONG type = request.Property.Flags & ~ULONG{KSPROPERTY_TYPE_TOPOLOGY};
  if (type != KSPROPERTY_TYPE_GET && type != KSPROPERTY_TYPE_SET) {
    return E_INVALIDARG;
  }
  Answer answer;
  if (data_bytes == 0) {
    answer = camera_.QueryLength(request.Property.Id);
  } else if (type == KSPROPERTY_TYPE_SET) {
    answer = camera_.Set(request.Property.Id, {static_cast<const std::uint8_t*>(data), data_bytes});
  } else {
    answer = camera_.Get(request.Property.Id, {static_cast<std::uint8_t*>(data), data_bytes});
  }
  *bytes_returned = answer.bytes;
  return answer.result;
}

}  // namespace virtual_camera
