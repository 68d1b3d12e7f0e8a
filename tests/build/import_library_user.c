// A host that binds every call of the library when it is linked. Built once with each import
// library; that it starts proves that all names are found at load time, its answer that a call
// arrives.
#include <stdint.h>
#include <stdio.h>

#define IMPORT __declspec(dllimport)

// Only addresses are taken of most calls, so their parameters need not be repeated here.
typedef void Call(void);
IMPORT Call UsbIniDevice, UsbFlashRead, UsbFlashWrite, UsbRegisterRead, UsbRegisterWrite,
    UsbI2cRead, UsbI2cWrite, UsbFlashErase, UsbFlashWriteFile, UsbDestroyUSB, UsbFlashQuickReadFile,
    UsbRegisterReadFile, UsbRegisterWriteFile, UsbI2CReadFile, UsbI2CWriteFile, UsbSelectDevice,
    UsbGetDeviceNum, GetProgressInfo, UsbGetAllDeviceInfo, UsbGetSelectDeviceInfo;
IMPORT uint8_t UsbUpdateDevice(void);

int main(void) {
  Call* const calls[] = {
      UsbIniDevice,         UsbFlashRead,    UsbFlashWrite,         UsbRegisterRead,
      UsbRegisterWrite,     UsbI2cRead,      UsbI2cWrite,           UsbFlashErase,
      UsbFlashWriteFile,    UsbDestroyUSB,   UsbFlashQuickReadFile, UsbRegisterReadFile,
      UsbRegisterWriteFile, UsbI2CReadFile,  UsbI2CWriteFile,       UsbSelectDevice,
      UsbGetDeviceNum,      GetProgressInfo, UsbGetAllDeviceInfo,   UsbGetSelectDeviceInfo,
  };
  int bound = 0;
  for (size_t i = 0; i < sizeof(calls) / sizeof(calls[0]); ++i) {
    bound += calls[i] != NULL ? 1 : 0;
  }
  // Nobody has called UsbIniDevice, so there is nothing to update.
  const int answer = UsbUpdateDevice();
  printf("bound %d calls, UsbUpdateDevice answers %d\n", bound, answer);
  return bound == 20 && answer == 0 ? 0 : 1;
}
