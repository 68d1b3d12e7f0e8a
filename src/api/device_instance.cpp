#include "api/device_instance.h"

#include <utility>

#include "base/never_destroyed.h"

namespace borvan {
namespace {

NeverDestroyed<DeviceInstance> g_device;

}  // namespace

std::shared_ptr<BorvanUsb_Q7> DeviceInstance::Get() const {
  const std::lock_guard lock(mutex_);
  return device_;
}

void DeviceInstance::Set(std::shared_ptr<BorvanUsb_Q7> device) {
  // The previous instance is destroyed with the parameter, after the lock is released.
  const std::lock_guard lock(mutex_);
  device_.swap(device);
}

DeviceInstance& GlobalInstance() {
  return g_device.value;
}

}  // namespace borvan
