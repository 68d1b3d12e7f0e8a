// Selects cameras by borvanusb_select.dll as a program does that loads both DLLs. Camera 0 is gone
// after it was listed, camera 1 can be opened. Usage: select_dll NEW_CONFIGURATION CONFIGURATION;
// the first replaces the second after the listing. Exit code 0, or the number of the step that went
// wrong.

#include <borvan_usb.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

typedef bool (*SelectFunction)(int32_t index, const char** message);

int main(int argc, char** argv) {
  const HMODULE library = LoadLibraryA("borvanusb_select.dll");
  SelectFunction select_device = NULL;
  const char* message = "";
  if (argc != 3 || library == NULL) {
    return 1;
  }
  const FARPROC found = GetProcAddress(library, "borvan_select_device");
  if (found == NULL) {
    return 2;
  }
  memcpy(&select_device, &found, sizeof select_device);
  if (UsbIniDevice() < 0 || UsbGetDeviceNum() != 2) {
    return 3;
  }
  if (MoveFileExA(argv[1], argv[2], MOVEFILE_REPLACE_EXISTING) == FALSE) {
    return 4;
  }
  if (select_device(2, &message) || message != NULL) {
    return 5;
  }
  for (int i = 0; i < 2; ++i) {
    if (select_device(0, &message) || message == NULL ||
        strcmp(message, "ERROR: gcap.pmVideo->BindToObject failed") != 0) {
      return 6;
    }
  }
  if (!select_device(1, &message) || message != NULL || !select_device(1, NULL)) {
    return 7;
  }
  return 0;
}
