// borvan_select_device for C projects: compile this file with your own sources, with the C++
// compiler. It makes the header's inline function available to C files. Projects in C++ and those
// that use Microsoft's compiler do not need this file; it does no harm there.

#include "borvan_usb.h"

// Taking its address makes the compiler emit the function.
extern "C" {
extern bool (*const borvan_select_device_body)(int32_t index, const char** message);
bool (*const borvan_select_device_body)(int32_t index, const char** message) = borvan_select_device;
}
