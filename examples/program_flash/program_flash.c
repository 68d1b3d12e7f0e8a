// Programs an image file into a camera's flash, reads the flash back and compares:
//
//   program_flash IMAGE ADDRESS CAMERA [SECONDS]
//
// ADDRESS is the flash address of the first byte, CAMERA the camera's index (0: the first), SECONDS
// the time limit of each of the two jobs (600). What is read back is in the file IMAGE.readback.
#include <borvan_usb.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Exit codes. 3 is what GCC's runtime ends a program with that an exception of the library leaves.
enum { kWrongArguments = 1, kFileUnusable = 2, kNoCamera = 4, kCameraNotOpened = 5 };
enum { kJobFailed = 6, kTimeLimit = 7, kDifferent = 8 };
enum { kLargestImage = 64 << 20 };

static char g_image[kLargestImage + 1];
static char g_read_back[kLargestImage + 1];

// Prints why the program ends, and ends it. A job that still runs ends with it, in the middle.
_Noreturn static void Fail(int code, const char* format, ...) {
  va_list values;  // NOLINT(cppcoreguidelines-init-variables)
  va_start(values, format);
  fputs("\nprogram_flash: ", stderr);
  vfprintf(stderr, format, values);
  fputs("\n", stderr);
  va_end(values);
  exit(code);
}

static uint32_t Number(const char* text, uint32_t highest) {
  char* end = NULL;
  const unsigned long long number = strtoull(text, &end, strncmp(text, "0x", 2) == 0 ? 16 : 10);
  if (text[0] < '0' || text[0] > '9' || *end != '\0' || number > highest) {
    Fail(kWrongArguments, "\"%s\" is no number from 0 to %lu", text, (unsigned long)highest);
  }
  return (uint32_t)number;
}

// Reads a file into `bytes`. Returns its size; 0 if it is empty or can't be read.
static size_t Load(const char* name, char* bytes) {
  FILE* const file = fopen(name, "rb");
  const size_t size = file != NULL ? fread(bytes, 1, sizeof g_image, file) : 0;
  const bool whole = file != NULL && ferror(file) == 0;
  if (file != NULL) {
    fclose(file);
  }
  return whole ? size : 0;
}

static void OpenCamera(int32_t camera) {
  const char* message = NULL;
  if (UsbIniDevice() < 0 || !borvan_select_device(camera, &message)) {
    Fail(message != NULL ? kCameraNotOpened : kNoCamera, "camera %ld: %s", (long)camera,
         message != NULL ? message : "there is no such camera\nIs it plugged in?");
  }
  // A camera that takes no commands can be selected too; the first access tells.
  uint32_t value = 0;
  if (!UsbRegisterRead(0x1A3, &value, kBorvanRegisterByte)) {
    Fail(kCameraNotOpened, "camera %ld does not take commands", (long)camera);
  }
}

static void ShowPercent(int32_t percent, void* doing) {
  fprintf(stderr, "\r%s: %d %%", (char*)doing, (int)percent);
}

static void WaitForJob(char* doing, bool started, uint64_t before, uint32_t seconds) {
  uint32_t status = kBorvanFileError;  // of a job that can't be started
  if (started) {
    status = borvan_wait_for_job(kBorvanJobOther, before, seconds * 1000, ShowPercent, doing);
  }
  if (status != 0) {
    const char* const text = borvan_status_message(status);
    Fail(status == kBorvanWaitTimeLimit ? kTimeLimit : kJobFailed,
         "%s: %s (0x%08lX)\nThe flash may hold a part of the image. Program it again.", doing,
         text != NULL ? text : "an error of the system or the camera", (unsigned long)status);
  }
}

int main(int argc, char** argv) {
  if (argc < 4 || argc > 5) {
    Fail(kWrongArguments, "usage: program_flash IMAGE ADDRESS CAMERA [SECONDS]");
  }
  const uint32_t address = Number(argv[2], UINT32_MAX);
  const int32_t camera = (int32_t)Number(argv[3], 1000);
  const uint32_t seconds = argc > 4 ? Number(argv[4], 86400) : 600;
  if (address % 4096 != 0) {  // the library would erase what lies before it, too
    Fail(kWrongArguments, "the address %s is no multiple of 4096", argv[2]);
  }
  const size_t size = Load(argv[1], g_image);
  if (size == 0 || size > kLargestImage || size - 1 > UINT32_MAX - address) {
    Fail(kFileUnusable, "%s: missing, empty or larger than the flash can be", argv[1]);
  }
  OpenCamera(camera);
  uint64_t before = borvan_before_job();
  WaitForJob("programming", UsbFlashWriteFile(argv[1], address), before, seconds);

  char file[1024];
  snprintf(file, sizeof file, "%s.readback", argv[1]);
  before = borvan_before_job();
  const bool reads = UsbFlashQuickReadFile(file, address, address + (uint32_t)size - 1);
  WaitForJob("reading back", reads, before, seconds);
  size_t found = 0;  // the job writes the file after it has reported its end
  for (int i = 0; i < 500 && found != size; ++i) {
    Sleep(20);
    found = Load(file, g_read_back);
  }
  if (found != size || memcmp(g_image, g_read_back, size) != 0) {
    Fail(kDifferent, "%s: %lu bytes read back, which differ from the image's %lu", file,
         (unsigned long)found, (unsigned long)size);
  }
  UsbDestroyUSB();
  printf("\nthe flash holds the image, %lu bytes\n", (unsigned long)size);
}
