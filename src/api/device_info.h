#pragma once

#include <borvan_usb.h>

#include "device/device_entry.h"

namespace borvan {

// Fills the record that hosts receive: path, then name, then the digits of the IDs. A text that is
// longer than its field runs into the next field, which then overwrites it, but never past the end
// of the record.
UsbDeviceInfo MakeDeviceInfo(const DeviceEntry& device);

}  // namespace borvan
