#pragma once

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

namespace borvanusb {

// Functions of COM, loaded when first needed. COM needs a dozen DLLs of the system, which take
// longer to load than most commands run.
struct ComFunctions {
  decltype(&::CoInitialize) CoInitialize = nullptr;
  decltype(&::CoCreateInstance) CoCreateInstance = nullptr;
  decltype(&::VariantInit) VariantInit = nullptr;
  decltype(&::VariantClear) VariantClear = nullptr;
};

// Null if a function is missing on this system.
const ComFunctions* LoadComFunctions();

}  // namespace borvanusb
