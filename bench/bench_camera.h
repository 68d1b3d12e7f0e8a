#pragma once

// bench_camera.dll: a capture filter in this process, whose vendor node reaches a flash in memory.
// The library finds and opens it like any camera; the timing program looks behind it.

#include <windows.h>

#include <strmif.h>

#include <ks.h>
#include <ksproxy.h>

#include "memory_flash.h"

namespace bench {

// {5B0E7A54-3C1D-4E0B-9B52-7D0C64F1A2E8}
constexpr GUID kBenchCameraClass = {
    0x5B0E7A54, 0x3C1D, 0x4E0B, {0x9B, 0x52, 0x7D, 0x0C, 0x64, 0xF1, 0xA2, 0xE8}};

constexpr std::size_t kFlashSize = std::size_t{128} << 20U;

// Environment variables for processes that a measuring program starts: bytes of flash (a power of
// two), counts of the time stamp counter that each transfer waits, a file with the first content.
constexpr const char* kSizeVariable = "BENCH_CAMERA_SIZE";
constexpr const char* kWaitVariable = "BENCH_CAMERA_WAIT";
constexpr const char* kContentVariable = "BENCH_CAMERA_CONTENT";

}  // namespace bench

extern "C" {

// The flash of 128 MiB behind the camera; lives as long as the DLL.
bench::MemoryFlash* BenchCameraFlash();

// The control that the library is handed too; lives as long as the DLL and needs no release.
IKsControl* BenchCameraControl();
}
