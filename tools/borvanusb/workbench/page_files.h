#pragma once

#include <span>

#include "workbench/services.h"

namespace borvanusb {

// The files of the page, compressed by the build.
std::span<const PageFile> PageFiles();

}  // namespace borvanusb
