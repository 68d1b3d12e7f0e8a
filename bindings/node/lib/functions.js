'use strict';

// The 21 functions of BorvanUSB_x64.dll as they are, and borvan_select_device. Their comments are in
// borvan_usb.h. Values that a function stores come back in an array of one number.

const path = require('node:path');

const koffi = require('koffi');

const {fromAnsi, toAnsi} = require('./system');

const kNative = path.join(__dirname, '..', 'native');
// The second DLL finds the first by its name, because it is loaded.
const library = koffi.load(path.join(kNative, 'BorvanUSB_x64.dll'));
const selector = koffi.load(path.join(kNative, 'borvanusb_select.dll'));

// A path or name of 120 bytes has no terminating zero, and the IDs never have one.
const UsbDeviceInfo = koffi.struct('UsbDeviceInfo', {
  path: koffi.array('uint8_t', 120, 'Typed'),
  name: koffi.array('uint8_t', 120, 'Typed'),
  vendor_id: koffi.array('uint8_t', 4, 'Typed'),
  product_id: koffi.array('uint8_t', 4, 'Typed'),
});

function deviceInfo(record) {
  return {
    path: fromAnsi(record.path),
    name: fromAnsi(record.name),
    vendorId: fromAnsi(record.vendor_id),
    productId: fromAnsi(record.product_id),
  };
}

const getAllDeviceInfo = library.func('UsbDeviceInfo* UsbGetAllDeviceInfo()');
const getSelectDeviceInfo = library.func('UsbDeviceInfo UsbGetSelectDeviceInfo()');
const getProgressInfo = library.func('uint64_t GetProgressInfo()');
const flashWriteFile = library.func('bool UsbFlashWriteFile(const uint8_t* file_name, uint32_t start_address)');
const flashQuickReadFile = library.func(
  'bool UsbFlashQuickReadFile(const uint8_t* file_name, uint32_t start_address, uint32_t end_address)');
const registerReadFile = library.func(
  'bool UsbRegisterReadFile(const uint8_t* file_name, uint32_t start_address, uint32_t end_address)');
const registerWriteFile = library.func('bool UsbRegisterWriteFile(const uint8_t* file_name)');
const i2cReadFile = library.func(
  'bool UsbI2CReadFile(uint32_t start_address, uint32_t end_address, const uint8_t* file_name, ' +
  'int32_t slave, uint32_t mode)');
const i2cWriteFile = library.func('bool UsbI2CWriteFile(const uint8_t* file_name, uint32_t option)');
const selectDevice = selector.func('bool borvan_select_device(int32_t index, _Out_ const char** message)');

const ansi = (call, name) => (name === null ? null : toAnsi(call, name));

module.exports = {
  UsbIniDevice: library.func('int32_t UsbIniDevice()'),
  UsbUpdateDevice: library.func('bool UsbUpdateDevice()'),
  UsbGetDeviceNum: library.func('int32_t UsbGetDeviceNum()'),
  UsbGetAllDeviceInfo() {
    const count = module.exports.UsbGetDeviceNum();
    const records = getAllDeviceInfo();
    return count > 0 ? koffi.decode(records, UsbDeviceInfo, count).map(deviceInfo) : [];
  },
  UsbGetSelectDeviceInfo: () => deviceInfo(getSelectDeviceInfo()),
  UsbSelectDevice: library.func('bool UsbSelectDevice(int32_t index)'),
  UsbDestroyUSB: library.func('bool UsbDestroyUSB()'),
  UsbRegisterRead: library.func(
    'bool UsbRegisterRead(uint32_t address, _Inout_ uint32_t* value, uint8_t flag)'),
  UsbRegisterWrite: library.func(
    'bool UsbRegisterWrite(uint32_t address, uint32_t value, uint8_t flag)'),
  UsbI2cRead: library.func(
    'bool UsbI2cRead(uint32_t device_id, uint32_t register_address, _Inout_ uint32_t* value, ' +
    'int32_t mode, uint32_t option)'),
  UsbI2cWrite: library.func(
    'bool UsbI2cWrite(uint32_t device_id, uint32_t register_address, uint32_t value, int32_t mode, ' +
    'uint32_t option)'),
  UsbFlashRead: library.func('bool UsbFlashRead(uint32_t address, _Inout_ uint32_t* value)'),
  UsbFlashWrite: library.func('bool UsbFlashWrite(uint32_t address, uint32_t value)'),
  UsbFlashErase: library.func('bool UsbFlashErase(uint32_t address)'),
  UsbFlashWriteFile: (file, start) => flashWriteFile(ansi('UsbFlashWriteFile', file), start),
  UsbFlashQuickReadFile: (file, start, end) =>
    flashQuickReadFile(ansi('UsbFlashQuickReadFile', file), start, end),
  UsbRegisterReadFile: (file, start, end) =>
    registerReadFile(ansi('UsbRegisterReadFile', file), start, end),
  UsbRegisterWriteFile: (file) => registerWriteFile(ansi('UsbRegisterWriteFile', file)),
  UsbI2CReadFile: (start, end, file, slave, mode) =>
    i2cReadFile(start, end, ansi('UsbI2CReadFile', file), slave, mode),
  UsbI2CWriteFile: (file, option) => i2cWriteFile(ansi('UsbI2CWriteFile', file), option),
  GetProgressInfo: () => BigInt(getProgressInfo()),

  // Selects as UsbSelectDevice does, and returns the text where that one throws.
  borvan_select_device(index) {
    const message = [null];
    const selected = selectDevice(index, message);
    return {selected, message: message[0]};
  },
};
