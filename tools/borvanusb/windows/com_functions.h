#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

namespace borvanusb {

// COM's functions, loaded when they are first needed: with them come a dozen of the system's DLLs,
// which take longer to load than most commands take to run.
struct ComFunctions {
  decltype(&::CoInitialize) CoInitialize = nullptr;
  decltype(&::CoCreateInstance) CoCreateInstance = nullptr;
  decltype(&::VariantInit) VariantInit = nullptr;
  decltype(&::VariantClear) VariantClear = nullptr;
};

// Null when the system lacks one of them.
const ComFunctions* LoadComFunctions();

}  // namespace borvanusb
