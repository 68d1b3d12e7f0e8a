#pragma once

#include <string>

namespace virtual_camera {

// The environment variable that names the configuration file.
inline constexpr wchar_t kConfigurationVariable[] = L"BORVAN_VIRTUAL_CAMERA";

// Returns the file that the environment variable kTraceVariable names, in UTF-8. Empty if the
// variable is not set.
std::string ProcessTraceFile();

// Returns the configuration file, in UTF-8: the one that the environment variable names, otherwise
// BorvanUSB\virtual-camera.json in the folder for the data of all users. It need not exist.
std::string ConfigurationFile();

}  // namespace virtual_camera
