#pragma once

#include <chrono>
#include <string>

namespace borvanusb {

// Returns a time in UTC: "2026-11-21T19:18:05Z".
std::string TimeText(std::chrono::system_clock::time_point time);

// Returns a time in UTC without - and :, for use in file names: "20261121T191805Z".
std::string TimeInFileName(std::chrono::system_clock::time_point time);

}  // namespace borvanusb
