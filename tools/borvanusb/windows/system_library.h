#pragma once

#include <windows.h>

namespace borvanusb {

// A DLL of the system that few commands need, loaded when it is needed: some bring a dozen others
// along, which take longer to load than most commands run. Only the system folder is searched,
// never for a file of the same name beside this program. Null if there is none.
inline HMODULE SystemLibrary(const wchar_t* name) {
  return LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

// Finds a function of a DLL that may be null. Returns whether there is one.
template <typename Function>
bool FindFunction(HMODULE library, const char* name, Function& function) {
  if (library == nullptr) {
    return false;
  }
  // The cast through void(*)() avoids a warning about different function types.
  function =
      reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
  return function != nullptr;
}

}  // namespace borvanusb
