// Loads a list of settings into the sensor and looks whether they arrived. See --help.
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "borvan_usb.h"
#include "settings_list.h"

enum ExitCode {
  kAllAsInTheList = 0,
  kWrongArguments = 1,
  kListUnusable = 2,
  // 3 stays free: with it the C runtime ends a program that a C++ exception leaves.
  kCameraNotOpened = 4,
  kLoadingFailed = 5,
  kReadingBackFailed = 6,
  kDifferent = 7,
  kTimeLimit = 8,
  kNoCamera = 9,
};

static const char kHelp[] =
    "Loads an I2C list into a camera's sensor, reads each register back and compares.\n"
    "\n"
    "usage: load_settings LIST [--camera N] [--option O] [--timeout S]\n"
    "\n"
    "  LIST         the list: lines like 0x3012,0x5a, after one 0xfff8 with the slave address and\n"
    "               one 0xfffe with the width code\n"
    "  --camera N   the camera's index; 0 when left out\n"
    "  --option O   handed to the chip, 0 to 15; 0 when left out\n"
    "  --timeout S  seconds after which to give up loading, 1 to 3600; 60 when left out\n"
    "\n"
    "exit codes\n"
    "  0  the sensor holds what the list says\n"
    "  1  wrong arguments\n"
    "  2  the list can't be used\n"
    "  3  the library threw an exception, such as out of memory\n"
    "  4  the camera can't be opened, or does not take commands\n"
    "  5  loading failed\n"
    "  6  a register can't be read back\n"
    "  7  registers differ from the list; each is shown\n"
    "  8  the time limit was reached\n"
    "  9  no such camera\n";

// Polled often beside the three seconds for which a job's 100 lasts.
enum { kPollMilliseconds = 20 };

// A register that every camera answers, and its bit for a chip that takes lists in packets.
static const uint32_t kFeatureRegister = 0x1A3;
static const uint32_t kFastLists = 0x20;

struct Arguments {
  const char* list;
  uint32_t camera;
  uint32_t option;
  uint32_t seconds;
};

// Reads a whole text as a number, decimal or with 0x.
static bool ReadNumber(const char* text, uint32_t lowest, uint32_t highest, uint32_t* number) {
  char* end = NULL;
  const unsigned long long value = strtoull(text, &end, strncmp(text, "0x", 2) == 0 ? 16 : 10);
  if (text[0] < '0' || text[0] > '9' || *end != '\0' || value < lowest || value > highest) {
    return false;
  }
  *number = (uint32_t)value;
  return true;
}

static bool ReadArguments(int argc, char** argv, struct Arguments* arguments) {
  struct {
    const char* name;
    uint32_t lowest;
    uint32_t highest;
    uint32_t* number;
  } const options[] = {
      {"--camera", 0, INT32_MAX, &arguments->camera},
      {"--option", 0, 15, &arguments->option},
      {"--timeout", 1, 3600, &arguments->seconds},
  };
  for (int i = 1; i < argc; ++i) {
    size_t option = 0;
    while (option < 3 && strcmp(argv[i], options[option].name) != 0) {
      ++option;
    }
    if (option < 3) {
      const char* const text = i + 1 < argc ? argv[++i] : "";
      if (!ReadNumber(text, options[option].lowest, options[option].highest,
                      options[option].number)) {
        fprintf(stderr, "load_settings: %s: \"%s\" is no number from %lu to %lu\n",
                options[option].name, text, (unsigned long)options[option].lowest,
                (unsigned long)options[option].highest);
        return false;
      }
    } else if (arguments->list == NULL && argv[i][0] != '-') {
      arguments->list = argv[i];
    } else {
      fprintf(stderr, "load_settings: \"%s\" is one argument too many (see --help)\n", argv[i]);
      return false;
    }
  }
  if (arguments->list == NULL) {
    fputs("load_settings: LIST is missing (see --help)\n", stderr);
    return false;
  }
  return true;
}

// A fresh instance has a progress that no former job reports into.
static int OpenCamera(uint32_t index) {
  const char* message = NULL;
  if (UsbIniDevice() < 0 || !borvan_select_device((int32_t)index, &message)) {
    if (message != NULL) {
      fprintf(stderr, "load_settings: camera %lu can't be opened: %s\n", (unsigned long)index,
              message);
      return kCameraNotOpened;
    }
    fprintf(stderr, "load_settings: there is no camera %lu\n", (unsigned long)index);
    return kNoCamera;
  }
  // A camera without the vendor channel is selected all the same; a first access tells.
  uint32_t features = 0;
  if (!UsbRegisterRead(kFeatureRegister, &features, kBorvanRegisterByte)) {
    fprintf(stderr, "load_settings: camera %lu does not take commands\n", (unsigned long)index);
    return kCameraNotOpened;
  }
  const UsbDeviceInfo camera = UsbGetSelectDeviceInfo();
  char name[kBorvanTextFieldSize + 1];
  borvan_copy_text(camera.name, name);
  printf("camera %lu, %s, takes lists %s\n", (unsigned long)index, name,
         (features & kFastLists) != 0 ? "in packets" : "register by register");
  return kAllAsInTheList;
}

static int ComplainOfStatus(const char* what, uint64_t progress) {
  const uint32_t status = (uint32_t)borvan_progress_status(progress);
  const char* const message = borvan_status_message(status);
  char text[256] = "";
  if (message == NULL) {  // a code of the system or of the device
    FormatMessageA(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        NULL, status, 0, text, sizeof text, NULL);
  }
  fprintf(stderr, "load_settings: %s: 0x%08lX %s\n", what, (unsigned long)status,
          message != NULL ? message : text);
  return kLoadingFailed;
}

// Nothing stops a job. When this gives up, the process must end without taking the instance down.
static int Load(const struct Arguments* arguments) {
  const ULONGLONG start = GetTickCount64();
  if (!UsbI2CWriteFile(arguments->list, arguments->option)) {
    return ComplainOfStatus("loading can't be started", GetProgressInfo());
  }
  for (;;) {
    const uint64_t progress = GetProgressInfo();
    switch (borvan_progress_state(progress)) {
      case kBorvanProgressDone:
        printf("loaded in %.2f s\n", (double)(GetTickCount64() - start) / 1000.0);
        return kAllAsInTheList;
      case kBorvanProgressFailed:
        return ComplainOfStatus("loading failed", progress);
      default:
        break;
    }
    if (GetTickCount64() - start >= 1000ULL * arguments->seconds) {
      fprintf(stderr, "load_settings: still loading after the time limit of %lu s\n",
              (unsigned long)arguments->seconds);
      return kTimeLimit;
    }
    Sleep(kPollMilliseconds);
  }
}

static int ReadBack(const struct Setting* settings, size_t count, uint32_t option) {
  size_t different = 0;
  for (size_t i = 0; i < count; ++i) {
    const struct Setting* const setting = &settings[i];
    const int digits = setting->mode == kBorvanI2cAddress16Data16 ? 4 : 2;
    uint32_t value = 0;
    if (!UsbI2cRead(setting->slave, setting->register_address, &value, setting->mode, option)) {
      fprintf(stderr, "load_settings: slave 0x%02lx: register 0x%04lx can't be read\n",
              (unsigned long)setting->slave, (unsigned long)setting->register_address);
      return kReadingBackFailed;
    }
    if (value != setting->value) {
      ++different;
      printf("slave 0x%02lx, register 0x%04lx: wanted 0x%0*lx, read 0x%0*lx\n",
             (unsigned long)setting->slave, (unsigned long)setting->register_address, digits,
             (unsigned long)setting->value, digits, (unsigned long)value);
    }
  }
  if (different > 0) {
    printf("different: %lu of %lu registers\n", (unsigned long)different, (unsigned long)count);
    return kDifferent;
  }
  printf("read back: %lu registers, all as in the list\n", (unsigned long)count);
  return kAllAsInTheList;
}

static int Run(const struct Arguments* arguments, const struct Setting* settings, size_t count) {
  int code = OpenCamera(arguments->camera);
  if (code == kAllAsInTheList) {
    code = Load(arguments);
  }
  if (code == kAllAsInTheList) {
    code = ReadBack(settings, count, arguments->option);
    UsbDestroyUSB();
  }
  return code;
}

int main(int argc, char** argv) {
  if (argc == 2 && (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0)) {
    fputs(kHelp, stdout);
    return kAllAsInTheList;
  }
  struct Arguments arguments = {.seconds = 60};
  if (!ReadArguments(argc, argv, &arguments)) {
    return kWrongArguments;
  }
  struct Setting* settings = NULL;
  size_t count = 0;
  char complaint[512];
  if (!ReadSettings(arguments.list, &settings, &count, complaint, sizeof complaint)) {
    fprintf(stderr, "load_settings: %s\n", complaint);
    return kListUnusable;
  }
  const int code = Run(&arguments, settings, count);
  free(settings);
  // A job may still be running: the process ends as a whole, nothing is taken down under it.
  fflush(stdout);
  _Exit(code);
}
