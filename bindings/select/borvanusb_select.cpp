// Exports borvan_select_device.

#include <borvan_usb.h>

// Taking its address makes the compiler emit the function, which the .def exports.
extern "C" {
extern bool (*const borvan_select_device_body)(int32_t index, const char** message);
bool (*const borvan_select_device_body)(int32_t index, const char** message) = borvan_select_device;
}
