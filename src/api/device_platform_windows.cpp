#include "api/device_instance.h"
#include "device/windows_platform.h"

namespace borvan {

std::unique_ptr<DevicePlatform> MakeDevicePlatform() {
  return std::make_unique<WindowsPlatform>();
}

}  // namespace borvan
