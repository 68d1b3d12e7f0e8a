// Nothing stands before the header: it must bring all that it needs.
#include "borvan_usb.h"

// A translation unit of C must declare something of its own.
typedef UsbDeviceInfo HeaderAloneInC;
