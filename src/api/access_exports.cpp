// The exports of single accesses. They convert between numbers and the device object's text.

#include <borvan_usb.h>

#include <string>

#include "api/device_instance.h"
#include "api/guarded_call.h"
#include "base/hexadecimal_text.h"

using borvan::FormatHex;
using borvan::GlobalInstance;
using borvan::Guarded;
using borvan::ParseUnsigned64Low;
using borvan::Succeeded;

namespace {

// A read starts with the caller's present value, so that a read without an answer returns it
// unchanged.
std::string IncomingText(const std::uint32_t* value) {
  return FormatHex(value == nullptr ? 0 : *value);
}

void StoreValue(const std::string& text, std::uint32_t* value) {
  if (value != nullptr) {
    *value = ParseUnsigned64Low(text);
  }
}

}  // namespace

extern "C" {

bool UsbFlashRead(std::uint32_t address, std::uint32_t* value) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    if (device == nullptr) {
      return false;
    }
    std::string text;
    // Deliberately true even if the read failed: callers recognise a failed read by the value 0.
    static_cast<void>(device->FlashRead(FormatHex(address), text));
    StoreValue(text, value);
    return true;
  });
}

bool UsbFlashWrite(std::uint32_t address, std::uint32_t value) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(device->FlashWrite(FormatHex(address), FormatHex(value)));
  });
}

bool UsbFlashErase(std::uint32_t address) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr && Succeeded(device->FlashErase(FormatHex(address)));
  });
}

bool UsbRegisterRead(std::uint32_t address, std::uint32_t* value, std::uint8_t flag) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    if (device == nullptr) {
      return false;
    }
    std::string text = IncomingText(value);
    if (!Succeeded(device->RegisterRead(FormatHex(address), text, flag))) {
      return false;
    }
    StoreValue(text, value);
    return true;
  });
}

bool UsbRegisterWrite(std::uint32_t address, std::uint32_t value, std::uint8_t flag) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr &&
           Succeeded(device->RegisterWrite(FormatHex(address), FormatHex(value), flag));
  });
}

bool UsbI2cRead(std::uint32_t device_id, std::uint32_t register_address, std::uint32_t* value,
                std::int32_t mode, std::uint32_t option) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    if (device == nullptr) {
      return false;
    }
    std::string text = IncomingText(value);
    if (!Succeeded(device->I2cRead(FormatHex(device_id), FormatHex(register_address), text, mode,
                                   option))) {
      return false;
    }
    StoreValue(text, value);
    return true;
  });
}

bool UsbI2cWrite(std::uint32_t device_id, std::uint32_t register_address, std::uint32_t value,
                 std::int32_t mode, std::uint32_t option) {
  return Guarded([=] {
    const auto device = GlobalInstance().Get();
    return device != nullptr &&
           Succeeded(device->I2cWrite(FormatHex(device_id), FormatHex(register_address),
                                      FormatHex(value), mode, option));
  });
}

}  // extern "C"
