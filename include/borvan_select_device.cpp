// borvan_select_device for C projects: compile this file along with them, with the C++ compiler. It
// gives the header's inline function a body that C files can call. Projects in C++ and those of
// Microsoft's compiler need it not, and may have it all the same.

#include "borvan_usb.h"

// To take its address is what makes the compiler emit the function.
extern "C" {
extern bool (*const borvan_select_device_body)(int32_t index, const char** message);
bool (*const borvan_select_device_body)(int32_t index, const char** message) = borvan_select_device;
}
