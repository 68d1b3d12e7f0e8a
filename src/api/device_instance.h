#pragma once

#include <memory>
#include <mutex>

#include "device/device_platform.h"
#include "protocol/borvan_usb_q7.h"

namespace borvan {

// The process-wide device instance. A reader's reference keeps the instance valid while it is used,
// even when another thread replaces it meanwhile.
class DeviceInstance {
 public:
  // Null without an instance.
  std::shared_ptr<BorvanUsb_Q7> Get() const;
  void Set(std::shared_ptr<BorvanUsb_Q7> device);

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<BorvanUsb_Q7> device_;
};

// The instance of this process. It is never destroyed: when the process ends, jobs may have been
// killed while they used it.
DeviceInstance& GlobalInstance();

// The platform for a new instance.
std::unique_ptr<DevicePlatform> MakeDevicePlatform();

}  // namespace borvan
