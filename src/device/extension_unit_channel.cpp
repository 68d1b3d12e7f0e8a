#include "device/extension_unit_channel.h"

#include <mutex>
#include <utility>

namespace borvan {
namespace {

// KSPROPERTY_TYPE_GET, _SET and _TOPOLOGY of the Windows SDK (ks.h).
constexpr std::uint32_t kTypeGet = 0x00000001;
constexpr std::uint32_t kTypeSet = 0x00000002;
constexpr std::uint32_t kTypeTopology = 0x10000000;

// The vendor unit answers at this node whatever id the topology gives its node, so the id found at
// opening is deliberately not sent.
constexpr std::uint32_t kTransferNodeId = 2;

// Makes a separate record for each transfer, so that two threads can't mix up selectors or
// directions.
NodePropertyRequest MakeRequest(std::uint32_t selector, std::uint32_t direction) {
  NodePropertyRequest request;
  request.set = kExtensionUnitGuid;
  request.id = selector;
  request.flags = direction | kTypeTopology;
  request.node_id = kTransferNodeId;
  return request;
}

}  // namespace

void ExtensionUnitChannel::Open(std::shared_ptr<ExtensionUnitControl> control,
                                std::uint32_t node_id) {
  // The former control is released after the lock: releasing calls into the driver.
  const std::lock_guard lock(lock_);
  control_.swap(control);
  node_id_ = node_id;
}

void ExtensionUnitChannel::Close() {
  std::shared_ptr<ExtensionUnitControl> released;
  const std::lock_guard lock(lock_);
  released.swap(control_);
}

bool ExtensionUnitChannel::IsOpen() const {
  const std::lock_guard lock(lock_);
  return control_ != nullptr;
}

std::uint32_t ExtensionUnitChannel::NodeId() const {
  const std::lock_guard lock(lock_);
  return node_id_;
}

std::shared_ptr<ExtensionUnitControl> ExtensionUnitChannel::Control() const {
  const std::lock_guard lock(lock_);
  return control_;
}

std::shared_ptr<ExtensionUnitControl> ExtensionUnitChannel::Abandon() {
  const std::lock_guard lock(lock_);
  return std::move(control_);
}

Result ExtensionUnitChannel::GetLength(std::uint32_t selector, std::uint32_t* length) const {
  const auto control = Control();
  if (control == nullptr || length == nullptr) {
    return kNullPointer;
  }
  std::uint32_t bytes_returned = 0;
  const Result result =
      control->KsProperty(MakeRequest(selector, kTypeGet), nullptr, 0, bytes_returned);
  if (result != kMoreData) {
    return result;
  }
  *length = bytes_returned;
  return kOk;
}

Result ExtensionUnitChannel::Set(std::uint32_t selector, std::uint32_t length, void* buffer) const {
  const auto control = Control();
  if (control == nullptr || buffer == nullptr) {
    return kNullPointer;
  }
  std::uint32_t bytes_returned = 0;
  return control->KsProperty(MakeRequest(selector, kTypeSet), buffer, length, bytes_returned);
}

Result ExtensionUnitChannel::Get(std::uint32_t selector, std::uint32_t length, void* buffer) const {
  const auto control = Control();
  if (control == nullptr || buffer == nullptr) {
    return kNullPointer;
  }
  std::uint32_t bytes_returned = 0;
  return control->KsProperty(MakeRequest(selector, kTypeGet), buffer, length, bytes_returned);
}

}  // namespace borvan
