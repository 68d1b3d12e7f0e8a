// Reads one register of a camera's chip. See --help.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "borvan_usb.h"

enum ExitCode {
  kValuePrinted = 0,
  kWrongArguments = 1,
  kNoCamera = 2,
  // 3 stays free: with it the C runtime ends a program that a C++ exception leaves.
  kCameraNotOpened = 4,
  kNoAnswer = 5,
};

static const char kHelp[] =
    "Reads one register of a camera's chip.\n"
    "\n"
    "usage: read_register ADDRESS [--wide] [--camera N]\n"
    "\n"
    "  ADDRESS     the register's address, decimal or with 0x\n"
    "  --wide      read 32 bits instead of 8\n"
    "  --camera N  the camera's index; 0 when left out\n"
    "\n"
    "exit codes\n"
    "  0  the value was printed\n"
    "  1  wrong arguments\n"
    "  2  no such camera\n"
    "  3  the library threw an exception, such as out of memory\n"
    "  4  the camera can't be opened\n"
    "  5  the camera did not answer\n";

// Reads a whole text as a number, decimal or with 0x; complains and ends the program otherwise.
static uint32_t NumberOf(const char* what, const char* text, uint32_t highest) {
  const int base = strncmp(text, "0x", 2) == 0 ? 16 : 10;
  char* end = NULL;
  const unsigned long long number = strtoull(text, &end, base);
  if (text[0] < '0' || text[0] > '9' || *end != '\0' || number > highest) {
    fprintf(stderr, "%s: \"%s\" is no number from 0 to 0x%lX\n", what, text,
            (unsigned long)highest);
    exit(kWrongArguments);
  }
  return (uint32_t)number;
}

// Makes an instance and opens the camera in it; complains if it can't.
static enum ExitCode OpenCamera(int32_t camera) {
  const char* message = NULL;
  if (UsbIniDevice() >= 0 && borvan_select_device(camera, &message)) {
    return kValuePrinted;
  }
  if (message == NULL) {
    fprintf(stderr, "there is no camera %ld\n", (long)camera);
    return kNoCamera;
  }
  fprintf(stderr, "camera %ld can't be opened: %s\n", (long)camera, message);
  return kCameraNotOpened;
}

int main(int argc, char** argv) {
  if (argc == 2 && (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0)) {
    fputs(kHelp, stdout);
    return kValuePrinted;
  }
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
    fputs("usage: read_register ADDRESS [--wide] [--camera N] (see --help)\n", stderr);
    return kWrongArguments;
  }
  const uint32_t address = NumberOf("ADDRESS", address_text, UINT32_MAX);

  const enum ExitCode opened = OpenCamera(camera);
  if (opened != kValuePrinted) {
    return opened;
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
    return kNoAnswer;
  }
  printf("0x%0*lx\n", width == kBorvanRegisterWide ? 8 : 2, (unsigned long)value);
  return kValuePrinted;
}
