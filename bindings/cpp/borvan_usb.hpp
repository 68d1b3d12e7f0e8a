#pragma once

// BorvanUSB for C++17 and later. Needs nothing but the public headers and the import library:
//
//     borvan::Camera camera;
//     camera.Select(0);
//     const std::uint32_t value = camera.ReadRegister(0x1a3);
//
// The 21 functions of the library are those of borvan_usb.h, which this header includes.
// borvan_program_flash.hpp, which includes windows.h, has ProgramFlash.

#include "borvan_camera.hpp"
