#include "protocol/i2c_access.h"

namespace borvan {
namespace {

// Returns kOk if single accesses are possible. A single access always moves 12 bytes, whatever
// length the device reports.
Result CheckI2cChannel(const CommandChannel& channel) {
  if (!channel.IsOpen()) {
    return kNullPointer;
  }
  if (HasFailed(channel.CheckAnswer(Selector::kI2c))) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  return kOk;
}

}  // namespace

Result WriteI2c(const CommandChannel& channel, const I2cAccess& access, std::uint32_t value) {
  const Result ready = CheckI2cChannel(channel);
  if (HasFailed(ready)) {
    return ready;
  }
  I2cBlock block = I2cWriteBlock(access, value);
  return channel.Set(Selector::kI2c, kI2cBlockLength, block);
}

Result ReadI2c(const CommandChannel& channel, const I2cAccess& access, std::string& value) {
  const Result ready = CheckI2cChannel(channel);
  if (HasFailed(ready)) {
    return ready;
  }
  I2cBlock block = I2cReadBlock(access);
  const Result sent = channel.Set(Selector::kI2c, kI2cBlockLength, block);
  if (HasFailed(sent)) {
    return sent;
  }
  const Result result = channel.Get(Selector::kI2c, kI2cBlockLength, block);
  if (HasFailed(result)) {
    return result;
  }
  if (auto answer = I2cReadValue(block, access.mode)) {
    value = std::move(*answer);
  }
  return result;
}

}  // namespace borvan
