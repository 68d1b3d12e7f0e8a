// A host that unloads the library beside a running job, and then stays until the clearing of the
// finished job's progress is over. Usage: windows_unload_host.exe IMAGE, with a camera plugged in.
// Exit code: 0, else the number of the step that went wrong, or the crash's own.

#include <borvan_usb.h>
#include <windows.h>

#include "crash_guard.h"

namespace {

constexpr char kLibrary[] = "BorvanUSB_x64.dll";

template <class Function>
Function* Find(HMODULE library, const char* name) {
  // FARPROC stands for any function type, which a direct cast would be warned about.
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

int Run(const char* image) {
  // Without a job the library can be unloaded.
  HMODULE library = LoadLibraryA(kLibrary);
  if (library == nullptr) {
    return 1;
  }
  if (Find<decltype(UsbIniDevice)>(library, "UsbIniDevice")() < 0) {
    return 2;
  }
  FreeLibrary(library);
  if (GetModuleHandleA(kLibrary) != nullptr) {
    return 3;
  }

  library = LoadLibraryA(kLibrary);
  if (Find<decltype(UsbIniDevice)>(library, "UsbIniDevice")() < 0 ||
      !Find<decltype(UsbSelectDevice)>(library, "UsbSelectDevice")(0)) {
    return 4;
  }
  auto* const progress = Find<decltype(GetProgressInfo)>(library, "GetProgressInfo");
  if (!Find<decltype(UsbFlashWriteFile)>(library, "UsbFlashWriteFile")(image, 0)) {
    return 5;
  }
  FreeLibrary(library);
  // Nothing else holds the library now: only what keeps it for the job's sake.
  if (GetModuleHandleA(kLibrary) == nullptr) {
    return 6;
  }
  constexpr DWORD kStep = 10;
  constexpr DWORD kLongest = 30'000;
  for (DWORD waited = 0; progress() != 100; waited += kStep) {
    if (waited > kLongest) {
      return 7;
    }
    Sleep(kStep);
  }
  // The report stays for three seconds; on a busy machine its end comes later.
  for (DWORD waited = 0; progress() != 0; waited += kStep) {
    if (waited > kLongest) {
      return 8;
    }
    Sleep(kStep);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  test::EndOnCrash();
  return argc == 2 ? Run(argv[1]) : 9;
}
