#include "windows/com_functions.h"

#include "windows/system_library.h"

namespace borvanusb {

const ComFunctions* LoadComFunctions() {
  static ComFunctions functions;
  static const bool kIsComplete = [] {
    const HMODULE com = SystemLibrary(L"ole32.dll");
    const HMODULE automation = SystemLibrary(L"oleaut32.dll");
    return FindFunction(com, "CoInitialize", functions.CoInitialize) &&
           FindFunction(com, "CoCreateInstance", functions.CoCreateInstance) &&
           FindFunction(automation, "VariantInit", functions.VariantInit) &&
           FindFunction(automation, "VariantClear", functions.VariantClear);
  }();
  return kIsComplete ? &functions : nullptr;
}

}  // namespace borvanusb
