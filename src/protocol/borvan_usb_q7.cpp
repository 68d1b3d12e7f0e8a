#include "protocol/borvan_usb_q7.h"

#include <utility>

#include "base/hexadecimal_text.h"
#include "protocol/flash_access.h"
#include "protocol/flash_bulk_read.h"
#include "protocol/flash_image_write.h"
#include "protocol/i2c_access.h"
#include "protocol/i2c_list.h"
#include "protocol/register_access.h"
#include "protocol/register_list.h"

namespace borvan {

Result BorvanUsb_Q7::SelectDevice(std::uint32_t index) {
  const Result result = BorvanUSBBase::SelectDevice(index);
  static_cast<void>(RegisterRead(FormatHex(kFeatureRegister), feature_text_, 0));
  return result;
}

Result BorvanUsb_Q7::ChannelGetLength(std::uint32_t selector, std::uint32_t* length) {
  return Channel().GetLength(selector, length);
}

Result BorvanUsb_Q7::ChannelSet(std::uint32_t selector, std::int32_t length, void* buffer) {
  return Channel().Set(selector, static_cast<std::uint32_t>(length), buffer);
}

Result BorvanUsb_Q7::ChannelGet(std::uint32_t selector, std::int32_t length, void* buffer) {
  return Channel().Get(selector, static_cast<std::uint32_t>(length), buffer);
}

Result BorvanUsb_Q7::RegisterWrite(std::string address, std::string value,
                                   std::uint8_t width_flag) {
  return WriteRegister(Commands(), ParseUnsignedLong(address), ParseUnsignedLong(value),
                       width_flag);
}

Result BorvanUsb_Q7::RegisterRead(std::string address, std::string& value,
                                  std::uint8_t width_flag) {
  return ReadRegister(Commands(), ParseUnsignedLong(address), width_flag, value);
}

Result BorvanUsb_Q7::I2cWrite(std::string slave, std::string register_address, std::string value,
                              std::int32_t mode, std::uint32_t option) {
  const I2cAccess access = {.slave = ParseUnsignedLong(slave),
                            .register_address = ParseUnsignedLong(register_address),
                            .mode = mode,
                            .option = option};
  return WriteI2c(Commands(), access, ParseUnsignedLong(value));
}

Result BorvanUsb_Q7::I2cRead(std::string slave, std::string register_address, std::string& value,
                             std::int32_t mode, std::uint32_t option) {
  const I2cAccess access = {.slave = ParseUnsignedLong(slave),
                            .register_address = ParseUnsignedLong(register_address),
                            .mode = mode,
                            .option = option};
  return ReadI2c(Commands(), access, value);
}

Result BorvanUsb_Q7::FlashWrite(std::string address, std::string value) {
  return WriteFlash(Commands(), ParseUnsignedLong(address), ParseUnsignedLong(value));
}

Result BorvanUsb_Q7::FlashRead(std::string address, std::string& value) {
  return ReadFlash(Commands(), ParseUnsignedLong(address), value);
}

Result BorvanUsb_Q7::FlashErase(std::string address) {
  return EraseFlash(Commands(), ParseUnsignedLong(address));
}

Result BorvanUsb_Q7::FlashWriteImage(std::vector<std::uint8_t> image, std::uint32_t start_address,
                                     ProgressCallback progress) {
  return ProgramFlash(Commands(), std::move(image), start_address, StopRequested(), progress);
}

Result BorvanUsb_Q7::FlashQuickReadImage(std::vector<std::uint8_t>& output,
                                         std::uint32_t start_address, std::uint32_t end_address,
                                         ProgressCallback progress) {
  return ReadFlashRange(Commands(), start_address, end_address, StopRequested(), progress, output);
}

Result BorvanUsb_Q7::RegisterReadList(std::vector<ListEntry>& list, std::uint32_t start_address,
                                      std::uint32_t end_address, ProgressCallback /*progress*/) {
  return ReadRegisterRun(Commands(), start_address, end_address, list);
}

Result BorvanUsb_Q7::RegisterWriteList(std::vector<ListEntry> list, std::uint32_t /*ignored*/,
                                       ProgressCallback /*progress*/) {
  return WriteRegisterList(Commands(), std::move(list));
}

bool BorvanUsb_Q7::HasFastI2c() const {
  return (ParseLong(feature_text_) & kFeatureFastI2c) != 0;
}

Result BorvanUsb_Q7::I2cReadList(std::vector<ListEntry>& list, std::uint32_t slave_address,
                                 std::uint32_t start_address, std::uint32_t end_address,
                                 std::uint32_t mode, ProgressCallback /*progress*/) {
  const I2cRun run = {.slave = slave_address,
                      .start_address = start_address,
                      .end_address = end_address,
                      .mode = mode};
  return HasFastI2c() ? ReadI2cBlocks(Commands(), run, StopRequested(), list)
                      : ReadI2cSteps(Commands(), run, StopRequested(), list);
}

Result BorvanUsb_Q7::I2cWriteList(std::vector<ListEntry> list, std::uint32_t option,
                                  ProgressCallback /*progress*/) {
  return HasFastI2c() ? WriteI2cPackets(Commands(), list, option, StopRequested())
                      : WriteI2cSteps(Commands(), list, StopRequested());
}

}  // namespace borvan
