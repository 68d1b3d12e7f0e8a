#pragma once

#include <span>

#include "workbench/services.h"

namespace borvanusb {

// The page, as the build made and compressed it.
std::span<const PageFile> PageFiles();

}  // namespace borvanusb
