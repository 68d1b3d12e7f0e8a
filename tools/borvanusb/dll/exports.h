#pragma once

#include <borvan_usb.h>

namespace borvanusb {

// The functions of the library. The host looks them up by name in the DLL, which it loads at run
// time.
struct Exports {
  decltype(&::UsbIniDevice) UsbIniDevice = nullptr;
  decltype(&::UsbUpdateDevice) UsbUpdateDevice = nullptr;
  decltype(&::UsbGetDeviceNum) UsbGetDeviceNum = nullptr;
  decltype(&::UsbGetAllDeviceInfo) UsbGetAllDeviceInfo = nullptr;
  decltype(&::UsbSelectDevice) UsbSelectDevice = nullptr;
  decltype(&::UsbRegisterRead) UsbRegisterRead = nullptr;
  decltype(&::UsbRegisterWrite) UsbRegisterWrite = nullptr;
  decltype(&::UsbRegisterReadFile) UsbRegisterReadFile = nullptr;
  decltype(&::UsbRegisterWriteFile) UsbRegisterWriteFile = nullptr;
  decltype(&::UsbI2cRead) UsbI2cRead = nullptr;
  decltype(&::UsbI2cWrite) UsbI2cWrite = nullptr;
  decltype(&::UsbI2CReadFile) UsbI2CReadFile = nullptr;
  decltype(&::UsbI2CWriteFile) UsbI2CWriteFile = nullptr;
  decltype(&::UsbFlashRead) UsbFlashRead = nullptr;
  decltype(&::UsbFlashWrite) UsbFlashWrite = nullptr;
  decltype(&::UsbFlashErase) UsbFlashErase = nullptr;
  decltype(&::UsbFlashWriteFile) UsbFlashWriteFile = nullptr;
  decltype(&::UsbFlashQuickReadFile) UsbFlashQuickReadFile = nullptr;
  decltype(&::GetProgressInfo) GetProgressInfo = nullptr;
};

// Calls `visit` with the name and the member of each function, to fill the table.
template <typename Visit>
void ForEachExport(Exports& exports, Visit visit) {
  visit("UsbIniDevice", exports.UsbIniDevice);
  visit("UsbUpdateDevice", exports.UsbUpdateDevice);
  visit("UsbGetDeviceNum", exports.UsbGetDeviceNum);
  visit("UsbGetAllDeviceInfo", exports.UsbGetAllDeviceInfo);
  visit("UsbSelectDevice", exports.UsbSelectDevice);
  visit("UsbRegisterRead", exports.UsbRegisterRead);
  visit("UsbRegisterWrite", exports.UsbRegisterWrite);
  visit("UsbRegisterReadFile", exports.UsbRegisterReadFile);
  visit("UsbRegisterWriteFile", exports.UsbRegisterWriteFile);
  visit("UsbI2cRead", exports.UsbI2cRead);
  visit("UsbI2cWrite", exports.UsbI2cWrite);
  visit("UsbI2CReadFile", exports.UsbI2CReadFile);
  visit("UsbI2CWriteFile", exports.UsbI2CWriteFile);
  visit("UsbFlashRead", exports.UsbFlashRead);
  visit("UsbFlashWrite", exports.UsbFlashWrite);
  visit("UsbFlashErase", exports.UsbFlashErase);
  visit("UsbFlashWriteFile", exports.UsbFlashWriteFile);
  visit("UsbFlashQuickReadFile", exports.UsbFlashQuickReadFile);
  visit("GetProgressInfo", exports.GetProgressInfo);
}

}  // namespace borvanusb
