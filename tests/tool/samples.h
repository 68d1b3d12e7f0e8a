#pragma once

#include <string>

namespace borvanusb::tool_test {

// The folder of the samples that are handed out.
inline const std::string kSamples = BORVAN_SAMPLES;

}  // namespace borvanusb::tool_test
