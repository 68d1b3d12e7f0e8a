#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include "base/common_arguments.h"
#include "output/progress.h"

namespace borvanusb {

// Progress in one of its forms: a bar that is drawn again in its line at most ten times a second,
// lines now and then, JSON objects, or none. kAuto is the bar on a terminal, else lines.
//   columns  asked before each drawing for the terminal's width; 0 or less counts as 80
//   sink     writes to standard error
//   clock    the time
std::unique_ptr<Progress> MakeProgress(
    ProgressMode mode, bool terminal, std::function<int()> columns,
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock);

// The lines of kLines that tell how a stage ended, and no others.
std::unique_ptr<Progress> MakeProgressOfEnds(
    std::function<void(std::string_view)> sink,
    std::function<std::chrono::steady_clock::time_point()> clock);

// Shows the same on both.
std::unique_ptr<Progress> ShowOnBoth(std::unique_ptr<Progress> first,
                                     std::unique_ptr<Progress> second);

}  // namespace borvanusb
