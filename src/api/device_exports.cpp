// The exports for the instance and its cameras: create, list, select.

#include <borvan_usb.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "api/device_info.h"
#include "api/device_instance.h"
#include "api/guarded_call.h"
#include "jobs/progress.h"

using borvan::BorvanUsb_Q7;
using borvan::DeviceEntry;
using borvan::GlobalInstance;
using borvan::Guarded;
using borvan::Succeeded;

namespace {

// An index that no list has: selecting it changes nothing.
constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;

}  // namespace

// Functions that do not check for an instance crash without one, as they always have: this is the
// caller's error.

extern "C" {

std::int32_t UsbIniDevice(void) {
  return Guarded([] {
    GlobalInstance().Set(nullptr);
    const auto device = std::make_shared<BorvanUsb_Q7>(borvan::MakeDevicePlatform());
    GlobalInstance().Set(device);
    return device->EnumerateDevices();
  });
}

bool UsbUpdateDevice(void) {
  return Guarded([] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(device->EnumerateDevices());
  });
}

bool UsbDestroyUSB(void) {
  return Guarded([] {
    const auto device = GlobalInstance().Get();
    // The selection is refused, but it reads the feature register of the selected camera once more.
    static_cast<void>(device->SelectDevice(kNoIndex));
    GlobalInstance().Set(nullptr);
    return true;
  });
}

bool UsbSelectDevice(std::int32_t index) {
  return Guarded([=] {
    if (index < 0) {
      return false;
    }
    const auto device = GlobalInstance().Get();
    if (index >= device->GetDeviceCount()) {
      return false;
    }
    static_cast<void>(device->SelectDevice(static_cast<std::uint32_t>(index)));
    return true;
  });
}

std::int32_t UsbGetDeviceNum(void) {
  return Guarded([] { return GlobalInstance().Get()->GetDeviceCount(); });
}

UsbDeviceInfo* UsbGetAllDeviceInfo(void) {
  return Guarded([] {
    const std::vector<DeviceEntry> devices = GlobalInstance().Get()->GetDeviceList();
    // Belongs to the caller from here on. Nothing frees it.
    auto* const records = new UsbDeviceInfo[devices.size()];
    std::transform(devices.begin(), devices.end(), records, borvan::MakeDeviceInfo);
    return records;
  });
}

UsbDeviceInfo UsbGetSelectDeviceInfo(void) {
  return Guarded(
      [] { return borvan::MakeDeviceInfo(GlobalInstance().Get()->GetSelectedDevice()); });
}

std::uint64_t GetProgressInfo(void) {
  return Guarded([] {
    const auto device = GlobalInstance().Get();
    return device == nullptr ? 0 : borvan::ReadProgress(device->Jobs());
  });
}

}  // extern "C"
