#pragma once

#include <string>

namespace borvanusb {

// Whether a folder of this name is there. The name is UTF-8.
bool IsFolder(const std::string& name);

}  // namespace borvanusb
