// Reads a register of a camera's chip and prints its value:
//
//   read_register ADDRESS CAMERA [wide]
//
// ADDRESS is decimal or has 0x in front, CAMERA is the camera's index (0: the first). With "wide"
// the register has 32 bits, otherwise 8.
#include <borvan_usb.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// 3 is what GCC's runtime ends a program with that an exception of the library leaves.
enum { kWrongArguments = 1, kNoCamera = 4, kCameraNotOpened = 5 };

static int Complain(int code, const char* subject, const char* text) {
  fprintf(stderr, "read_register: %s: %s\n", subject, text);
  return code;
}

static bool ReadNumber(const char* text, uint32_t highest, uint32_t* number) {
  char* end = NULL;
  const unsigned long long value = strtoull(text, &end, strncmp(text, "0x", 2) == 0 ? 16 : 10);
  *number = (uint32_t)value;
  return text[0] >= '0' && text[0] <= '9' && *end == '\0' && value <= highest;
}

int main(int argc, char** argv) {
  uint32_t address = 0;
  uint32_t camera = 0;
  const bool wide = argc == 4 && strcmp(argv[3], "wide") == 0;
  if ((argc != 3 && !wide) || !ReadNumber(argv[1], UINT32_MAX, &address) ||
      !ReadNumber(argv[2], 1000, &camera)) {
    return Complain(kWrongArguments, "usage", "read_register ADDRESS CAMERA [wide]");
  }
  const char* message = NULL;
  if (UsbIniDevice() < 0 || !borvan_select_device((int32_t)camera, &message)) {
    return message != NULL ? Complain(kCameraNotOpened, argv[2], message)
                           : Complain(kNoCamera, argv[2], "no such camera\nIs it plugged in?");
  }
  // A read that goes unanswered returns true as well and leaves the value, so a 0 that is still
  // there is read once more over another value.
  const uint8_t width = wide ? kBorvanRegisterWide : kBorvanRegisterByte;
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
    return Complain(kCameraNotOpened, argv[2], "the camera does not answer\nPlug it in again.");
  }
  printf("0x%0*lx\n", wide ? 8 : 2, (unsigned long)value);
  return 0;
}
