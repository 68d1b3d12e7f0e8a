// A host in C built with the library's compiler. Usage: c_host UsbSelectDevice or c_host
// borvan_select_device; camera 0 can't be opened, camera 1 can. Exit code: 100, or the number of
// the step that went wrong; the C runtime's own, 3, when an exception ended it.

#include <borvan_usb.h>
#include <stdio.h>
#include <string.h>

enum { kGone = 0, kGood = 1, kNobody = 2 };

static int SelectWithoutExceptions(void) {
  const char* message = "";
  if (borvan_select_device(kNobody, &message) || message != NULL) {
    return 11;
  }
  for (int i = 0; i < 2; ++i) {
    if (borvan_select_device(kGone, &message) || message == NULL ||
        strcmp(message, "ERROR: gcap.pmVideo->BindToObject failed") != 0) {
      return 12;
    }
  }
  if (borvan_select_device(kGone, NULL)) {
    return 13;
  }
  if (!borvan_select_device(kGood, &message) || message != NULL) {
    return 14;
  }
  uint32_t value = 0;
  UsbRegisterWrite(0x100, 0x5A, kBorvanRegisterByte);
  return UsbRegisterRead(0x100, &value, kBorvanRegisterByte) && value == 0x5A ? 100 : 15;
}

int main(int argc, char** argv) {
  if (argc != 2 || UsbIniDevice() < 0) {
    return 10;
  }
  if (strcmp(argv[1], "borvan_select_device") == 0) {
    return SelectWithoutExceptions();
  }
  UsbSelectDevice(kGone);
  return 16;
}
