#pragma once

#include <string>

namespace borvanusb {

// Whether a folder with this name exists. The name is UTF-8.
bool IsFolder(const std::string& name);

}  // namespace borvanusb
