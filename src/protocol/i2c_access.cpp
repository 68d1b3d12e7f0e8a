// Registers of devices on the chip's I2C bus, one at a time, on selector 2.

#include "base/hexadecimal_text.h"
#include "protocol/borvan_usb_q7.h"
#include "protocol/i2c_blocks.h"

namespace borvan {

Result BorvanUsb_Q7::CheckI2cChannel() {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  // The length itself plays no part: a single access always moves 12 bytes.
  std::uint32_t ignored_length = 0;
  if (HasFailed(ChannelGetLength(static_cast<std::uint32_t>(Selector::kI2c), &ignored_length))) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  return kOk;
}

Result BorvanUsb_Q7::I2cWrite(std::string slave, std::string register_address, std::string value,
                              std::int32_t mode, std::uint32_t option) {
  const Result ready = CheckI2cChannel();
  if (HasFailed(ready)) {
    return ready;
  }
  const I2cAccess access = {ParseUnsignedLong(slave), ParseUnsignedLong(register_address), mode,
                            option};
  I2cBlock block = I2cWriteBlock(access, ParseUnsignedLong(value));
  return Set(Selector::kI2c, kI2cBlockLength, block);
}

Result BorvanUsb_Q7::I2cRead(std::string slave, std::string register_address, std::string& value,
                             std::int32_t mode, std::uint32_t option) {
  const Result ready = CheckI2cChannel();
  if (HasFailed(ready)) {
    return ready;
  }
  const I2cAccess access = {ParseUnsignedLong(slave), ParseUnsignedLong(register_address), mode,
                            option};
  I2cBlock block = I2cReadBlock(access);
  const Result sent = Set(Selector::kI2c, kI2cBlockLength, block);
  if (HasFailed(sent)) {
    return sent;
  }
  const Result result = Get(Selector::kI2c, kI2cBlockLength, block);
  if (HasFailed(result)) {
    return result;
  }
  if (auto answer = I2cReadValue(block, mode)) {
    value = std::move(*answer);
  }
  return result;
}

}  // namespace borvan
