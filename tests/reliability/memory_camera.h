#pragma once

// memory_camera.dll: a capture filter in this process whose transfers take no time, so that
// thousands of rounds do not wait for a camera. It keeps count of what its hosts hold and falls off
// when it is told to.

#include <windows.h>

#include <cstdint>

namespace reliability {

// {8E3B6C1F-52D4-4F0A-9C77-31B2A6E4D905}
constexpr GUID kMemoryCameraClass = {
    0x8E3B6C1F, 0x52D4, 0x4F0A, {0x9C, 0x77, 0x31, 0xB2, 0xA6, 0xE4, 0xD9, 0x05}};

// What a transfer answers while the camera is off.
constexpr std::uint32_t kUnplugged = 0x8007048F;

}  // namespace reliability

extern "C" {

// Objects that someone still refers to. Each opening makes one of both.
std::int32_t MemoryCameraControls();
std::int32_t MemoryCameraFilters();
// References to the controls, all together.
std::int32_t MemoryCameraReferences();

// Transfers since the start.
std::int64_t MemoryCameraTransfers();

// The camera answers this many transfers more and falls off then.
void MemoryCameraUnplugAfter(std::int64_t more_transfers);
void MemoryCameraPlug();

// The value of the feature register.
void MemoryCameraSetFeatures(std::uint8_t feature_bits);
}
