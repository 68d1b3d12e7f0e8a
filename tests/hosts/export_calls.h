#pragma once

// The library's calls one by one, for hosts in C and C++ that see what each of them raises. Camera
// kGood can be opened; files are taken from the current folder.

#include <borvan_usb.h>
#include <windows.h>

#include "library_imports.h"

enum { kGone = 0, kGood = 1, kNobody = 2 };

struct ExportCall {
  const char* name;
  bool allocates;
};

static const struct ExportCall kExportCalls[] = {
    {"UsbFlashWriteFile", true},
    {"UsbFlashQuickReadFile", true},
    {"UsbRegisterReadFile", true},
    {"UsbRegisterWriteFile", true},
    {"UsbI2CReadFile", true},
    {"UsbI2CWriteFile", true},
    {"UsbUpdateDevice", true},
    {"UsbFlashRead", true},
    {"UsbFlashWrite", true},
    {"UsbFlashErase", true},
    {"UsbRegisterRead", true},
    {"UsbRegisterWrite", true},
    {"UsbI2cRead", false},
    {"UsbI2cWrite", false},
    {"UsbSelectDevice", true},
    {"UsbGetDeviceNum", false},
    {"GetProgressInfo", false},
    {"UsbGetAllDeviceInfo", true},
    {"UsbGetSelectDeviceInfo", true},
    {"UsbDestroyUSB", true},
    {"UsbIniDevice", true},
};
enum {
  kExportCallCount = sizeof kExportCalls / sizeof kExportCalls[0],
  kJobStarterCount = 6,     // the first ones of the list
  kFirstInstanceCall = 14,  // those between access registers, sensors and the flash
};

static inline void StartJob(int which) {
  switch (which) {
    case 0:
      UsbFlashWriteFile("image.bin", 0);
      break;
    case 1:
      UsbFlashQuickReadFile("flash.bin", 0, 0xFF);
      break;
    case 2:
      UsbRegisterReadFile("registers.bin", 0x100, 0x17F);
      break;
    case 3:
      UsbRegisterWriteFile("registers.txt");
      break;
    case 4:
      UsbI2CReadFile(0, 7, "sensor.bin", 0x20, kBorvanI2cAddress8Data8);
      break;
    default:
      UsbI2CWriteFile("sensor.txt", 0);
      break;
  }
}

static inline void AccessCamera(int which) {
  uint32_t value = 0;
  switch (which) {
    case 6:
      UsbUpdateDevice();
      break;
    case 7:
      UsbFlashRead(0, &value);
      break;
    case 8:
      UsbFlashWrite(0, 0xFFFFFFFF);
      break;
    case 9:
      UsbFlashErase(0);
      break;
    case 10:
      UsbRegisterRead(0x100, &value, kBorvanRegisterByte);
      break;
    case 11:
      UsbRegisterWrite(0x100, 0x5A, kBorvanRegisterByte);
      break;
    case 12:
      UsbI2cRead(0x20, 0, &value, kBorvanI2cAddress8Data8, 0);
      break;
    default:
      UsbI2cWrite(0x20, 0, 0x5A, kBorvanI2cAddress8Data8, 0);
      break;
  }
}

static inline void CallInstance(int which) {
  switch (which) {
    case 14:
      UsbSelectDevice(kGood);
      break;
    case 15:
      UsbGetDeviceNum();
      break;
    case 16:
      GetProgressInfo();
      break;
    case 17:
      UsbGetAllDeviceInfo();
      break;
    case 18:
      UsbGetSelectDeviceInfo();
      break;
    case 19:
      UsbDestroyUSB();
      break;
    default:
      UsbIniDevice();
      break;
  }
}

static inline void MakeExportCall(int which) {
  if (which < kJobStarterCount) {
    StartJob(which);
  } else if (which < kFirstInstanceCall) {
    AccessCamera(which);
  } else {
    CallInstance(which);
  }
}

// An instance of its own for the next call, with a progress that no former job reports into.
static inline bool Renew(void) {
  return UsbIniDevice() >= 0 && UsbSelectDevice(kGood);
}

static inline bool JobEnds(void) {
  for (int i = 0; i < 2000; ++i) {
    if (borvan_progress_state(GetProgressInfo()) != kBorvanProgressRunning) {
      return true;
    }
    Sleep(10);
  }
  return false;
}

// Makes a call again and again, first with its first allocation failing, then with its second,
// until none is left to fail. `raises` makes the call and tells whether it raised what it may.
// Returns how often it did; -1 when a call went wrong otherwise.
static inline int TimesRaisedWithoutMemory(int which, bool (*raises)(int which)) {
  int raised = 0;
  for (unsigned allocation = 1; allocation < 1000; ++allocation) {
    if (!Renew()) {
      return -1;
    }
    g_failing_allocation = allocation;
    const bool has_raised = raises(which);
    const bool has_failed = g_failing_allocation == 0;
    g_failing_allocation = 0;
    if (!has_failed) {
      return has_raised || (which < kJobStarterCount && !JobEnds()) ? -1 : raised;
    }
    raised += has_raised ? 1 : 0;
  }
  return -1;
}
