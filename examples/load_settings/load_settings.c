// Loads an I2C list into a camera's sensor and waits until that is done:
//
//   load_settings LIST CAMERA [SECONDS]
//
// CAMERA is the camera's index (0: the first), SECONDS the time limit (60).
#include <borvan_usb.h>
#include <stdio.h>
#include <stdlib.h>

// 3 is what GCC's runtime ends a program with that an exception of the library leaves.
enum { kWrongArguments = 1, kFileUnusable = 2, kNoCamera = 4, kCameraNotOpened = 5 };
enum { kJobFailed = 6, kTimeLimit = 7 };

static int Complain(int code, const char* subject, const char* text) {
  fprintf(stderr, "load_settings: %s: %s\n", subject, text);
  return code;
}

static bool ReadNumber(const char* text, unsigned long highest, unsigned long* number) {
  char* end = NULL;
  *number = strtoul(text, &end, 10);
  return text[0] >= '0' && text[0] <= '9' && *end == '\0' && *number <= highest;
}

static int OpenCamera(int32_t camera, const char* name) {
  const char* message = NULL;
  if (UsbIniDevice() < 0 || !borvan_select_device(camera, &message)) {
    return message != NULL ? Complain(kCameraNotOpened, name, message)
                           : Complain(kNoCamera, name, "no such camera\nIs it plugged in?");
  }
  // A camera that takes no commands can be selected too; the first access tells.
  uint32_t value = 0;
  if (!UsbRegisterRead(0x1A3, &value, kBorvanRegisterByte)) {
    return Complain(kCameraNotOpened, name, "the camera does not take commands");
  }
  return 0;
}

int main(int argc, char** argv) {
  unsigned long camera = 0;
  unsigned long seconds = 60;
  if (argc < 3 || argc > 4 || !ReadNumber(argv[2], 1000, &camera) ||
      (argc > 3 && !ReadNumber(argv[3], 3600, &seconds))) {
    return Complain(kWrongArguments, "usage", "load_settings LIST CAMERA [SECONDS]");
  }
  const int opened = OpenCamera((int32_t)camera, argv[2]);
  if (opened != 0) {
    return opened;
  }
  const uint64_t before = borvan_before_job();
  if (!UsbI2CWriteFile(argv[1], 0)) {
    return Complain(kFileUnusable, argv[1], borvan_status_message(kBorvanFileError));
  }
  const uint32_t status =
      borvan_wait_for_job(kBorvanJobOther, before, (uint32_t)seconds * 1000, NULL, NULL);
  if (status == kBorvanWaitTimeLimit) {  // the job may still run: leave the camera alone
    return Complain(kTimeLimit, argv[1], borvan_status_message(status));
  }
  UsbDestroyUSB();
  if (status == kBorvanFileError) {
    return Complain(kFileUnusable, argv[1], "no entry that the library understands");
  }
  if (status != 0) {
    char code[64];
    snprintf(code, sizeof code, "an error of the system or the camera, 0x%08lX",
             (unsigned long)status);
    const char* const text = borvan_status_message(status);
    return Complain(kJobFailed, argv[1], text != NULL ? text : code);
  }
  printf("%s is loaded\n", argv[1]);
  return 0;
}
