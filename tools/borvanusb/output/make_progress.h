#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include "base/common_arguments.h"
#include "output/progress.h"

namespace borvanusb {

// Creates a progress display: a bar, which is redrawn in its line at most ten times per second;
// lines at intervals; JSON objects; or none. kAuto selects the bar on a terminal, otherwise lines.
//   terminal  whether standard error is a terminal
//   columns   returns the width of the terminal; called before each drawing; 0 or less counts as 80
//   sink      writes to standard error
//   clock     returns the time
std::unique_ptr<Progress> MakeProgress(
    ProgressMode mode, bool terminal, std::function<int()> columns,
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock);

// Creates a display that prints only the last line of each operation, as kLines does.
std::unique_ptr<Progress> MakeProgressOfEnds(
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock);

// Creates a display that passes every call to both displays.
std::unique_ptr<Progress> ShowOnBoth(std::unique_ptr<Progress> first,
                                     std::unique_ptr<Progress> second);

}  // namespace borvanusb
