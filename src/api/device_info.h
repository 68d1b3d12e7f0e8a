#pragma once

#include <borvan_usb.h>

#include "device/device_entry.h"

namespace borvan {

// Fills the record that hosts receive: path, then name, then the digits of the IDs. A text longer
// than its field runs into the next one, which is then written over, and never past the record.
UsbDeviceInfo MakeDeviceInfo(const DeviceEntry& device);

}  // namespace borvan
