#include "windows/com_functions.h"

namespace borvanusb {

namespace {

template <typename Function>
bool Find(HMODULE library, const char* name, Function& function) {
  if (library == nullptr) {
    return false;
  }
  // The cast through void(*)() avoids a warning about different function types.
  function =
      reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
  return function != nullptr;
}

// Loads from the system folder only, never a file of the same name beside this program.
HMODULE SystemLibrary(const wchar_t* name) {
  return LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

}  // namespace

const ComFunctions* LoadComFunctions() {
  static ComFunctions functions;
  static const bool kIsComplete = [] {
    const HMODULE com = SystemLibrary(L"ole32.dll");
    const HMODULE automation = SystemLibrary(L"oleaut32.dll");
    return Find(com, "CoInitialize", functions.CoInitialize) &&
           Find(com, "CoCreateInstance", functions.CoCreateInstance) &&
           Find(automation, "VariantInit", functions.VariantInit) &&
           Find(automation, "VariantClear", functions.VariantClear);
  }();
  return kIsComplete ? &functions : nullptr;
}

}  // namespace borvanusb
