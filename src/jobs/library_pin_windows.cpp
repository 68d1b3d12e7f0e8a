#include <windows.h>

#include "jobs/library_pin.h"

namespace borvan {

void PinLibrary() {
  HMODULE pinned = nullptr;
  static_cast<void>(
      GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<const char*>(&PinLibrary), &pinned));
}

}  // namespace borvan
