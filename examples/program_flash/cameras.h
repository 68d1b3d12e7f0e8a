#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "borvan_usb.h"

// Makes a fresh instance of the library, with a progress that no former job reports into, and lists
// the cameras. Throws Failure (kNoCamera) when the system's list can't be had or is empty.
std::vector<UsbDeviceInfo> ListCameras();

// One line per camera on the standard output.
void PrintCameras(const std::vector<UsbDeviceInfo>& cameras);

// The camera that --camera means.
//   choice  index or device path; empty: the only camera there is
// Throws Failure (kNoCamera) when none or more than one is meant.
std::int32_t FindCamera(const std::vector<UsbDeviceInfo>& cameras, const std::string& choice);

// The device path of a camera, by which it is found again when the list has changed.
std::string PathOf(const UsbDeviceInfo& camera);

// Selects a camera and makes sure that its chip can be reached. Throws Failure (kCameraNotOpened).
void OpenCamera(std::int32_t index);

// "0xE000000A, File name error or file error", or the system's text for a code of the system.
std::string StatusText(std::uint32_t status);
