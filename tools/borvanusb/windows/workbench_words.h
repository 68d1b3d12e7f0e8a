#pragma once

#include <string_view>

namespace borvanusb {

// The first word of a worker's command line. The handles of its two pipes follow.
constexpr std::string_view kWorkerWord = "--workbench-worker";

}  // namespace borvanusb
