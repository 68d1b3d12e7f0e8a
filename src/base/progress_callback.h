#pragma once

#include <cstdint>
#include <functional>

namespace borvan {

// The percentages of a job's last report, on success and on failure.
constexpr std::int32_t kDonePercent = 100;
constexpr std::int32_t kFailurePercent = -1;

// Receives (status, percent): (0, 0 to 99) while working, (0, 100) when done, (status, -1) on
// failure. May be empty.
using ProgressCallback = std::function<void(std::int32_t status, std::int32_t percent)>;

}  // namespace borvan
