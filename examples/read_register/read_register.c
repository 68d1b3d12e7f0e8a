// Reads one register of a camera's chip: read_register ADDRESS [--wide] [--camera N]
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "borvan_usb.h"

// Reads a whole text as a number, decimal or with 0x; complains and ends the program otherwise.
static uint32_t NumberOf(const char* what, const char* text, uint32_t highest) {
  const int base = strncmp(text, "0x", 2) == 0 ? 16 : 10;
  char* end = NULL;
  const unsigned long long number = strtoull(text, &end, base);
  if (text[0] < '0' || text[0] > '9' || *end != '\0' || number > highest) {
    fprintf(stderr, "%s: \"%s\" is no number from 0 to 0x%lX\n", what, text,
            (unsigned long)highest);
    exit(1);
  }
  return (uint32_t)number;
}

int main(int argc, char** argv) {
  const char* address_text = NULL;
  int32_t camera = 0;
  uint8_t width = kBorvanRegisterByte;
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "--wide") == 0) {
      width = kBorvanRegisterWide;
    } else if (strcmp(argv[i], "--camera") == 0 && i + 1 < argc) {
      camera = (int32_t)NumberOf("--camera", argv[++i], INT32_MAX);
    } else if (address_text == NULL && argv[i][0] != '-') {
      address_text = argv[i];
    } else {
      address_text = NULL;
      break;
    }
  }
  if (address_text == NULL) {
    fputs("usage: read_register ADDRESS [--wide] [--camera N]\n", stderr);
    return 1;
  }
  const uint32_t address = NumberOf("ADDRESS", address_text, UINT32_MAX);

  // A camera that is there but can't be opened raises a C++ exception, which ends a C program.
  // A host that must live on makes this one call from a C++ file.
  if (UsbIniDevice() < 0 || !UsbSelectDevice(camera)) {
    fprintf(stderr, "there is no camera %ld\n", (long)camera);
    return 2;
  }
  // A read that goes unanswered returns true as well and leaves the value, so a 0 that is still
  // there is read once more over another value.
  uint32_t value = 0;
  bool transferred = UsbRegisterRead(address, &value, width);
  bool answered = value != 0;
  if (transferred && !answered) {
    value = UINT32_MAX;
    transferred = UsbRegisterRead(address, &value, width);
    answered = value != UINT32_MAX;
  }
  UsbDestroyUSB();
  if (!transferred || !answered) {
    fprintf(stderr, "camera %ld did not %s\n", (long)camera,
            transferred ? "answer" : "take the command");
    return 3;
  }
  printf("0x%0*lx\n", width == kBorvanRegisterWide ? 8 : 2, (unsigned long)value);
  return 0;
}
