#pragma once

#include <chrono>
#include <string>

namespace borvanusb {

// A time in UTC: "2026-11-21T19:18:05Z".
std::string TimeText(std::chrono::system_clock::time_point time);

// The same for the middle of a file's name: "20261121T191805Z".
std::string TimeInFileName(std::chrono::system_clock::time_point time);

}  // namespace borvanusb
