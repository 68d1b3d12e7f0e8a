#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/borvan_usb_base.h"
#include "protocol/command_channel.h"
#include "protocol/stop_query.h"

namespace borvan {

// The device object with the chip's command protocol. Each operation calls the function that
// implements it, which takes numbers; the headers of this folder describe these functions. Without
// a channel, single accesses send nothing and return kNullPointer; in the bulk operations, every
// transfer then fails.
class BorvanUsb_Q7 : public BorvanUSBBase {
 public:
  using BorvanUSBBase::BorvanUSBBase;

  // Selects a camera, then reads the feature register of the selected camera: after a refused
  // index, this is the camera that stays selected. Returns the result of the selection.
  Result SelectDevice(std::uint32_t index) override;

  Result ChannelGetLength(std::uint32_t selector, std::uint32_t* length) override;
  Result ChannelSet(std::uint32_t selector, std::int32_t length, void* buffer) override;
  Result ChannelGet(std::uint32_t selector, std::int32_t length, void* buffer) override;

  // Width flag: a write uses the wide form for every flag but 0, a read only for 1.
  Result RegisterWrite(std::string address, std::string value, std::uint8_t width_flag) override;
  // Replaces `value` only if the reply belongs to this read. A foreign reply is not a failure.
  Result RegisterRead(std::string address, std::string& value, std::uint8_t width_flag) override;

  // Mode: i2c_mode. The option byte is sent to the chip unchanged.
  Result I2cWrite(std::string slave, std::string register_address, std::string value,
                  std::int32_t mode, std::uint32_t option);
  // Replaces `value` on success in the modes 0 to 5.
  Result I2cRead(std::string slave, std::string register_address, std::string& value,
                 std::int32_t mode, std::uint32_t option);

  Result FlashWrite(std::string address, std::string value) override;
  // Returns 0 and eight digits in `value`, or 1 and leaves `value` unchanged if no reply is usable.
  Result FlashRead(std::string address, std::string& value) override;
  Result FlashErase(std::string address) override;

  // Erases every sector that the image covers, then writes the image in pieces of 60 bytes. Skips
  // blank pieces. Reports (0, 1 to 99).
  Result FlashWriteImage(std::vector<std::uint8_t> image, std::uint32_t start_address,
                         ProgressCallback progress) override;

  // Appends the inclusive range to `output`. A failing transfer is repeated until a stop request.
  Result FlashQuickReadImage(std::vector<std::uint8_t>& output, std::uint32_t start_address,
                             std::uint32_t end_address, ProgressCallback progress) override;

  // Appends the page markers and one entry for each register. Only the low 16 bits of the addresses
  // limit the run, which is in the page of the start address.
  Result RegisterReadList(std::vector<ListEntry>& list, std::uint32_t start_address,
                          std::uint32_t end_address, ProgressCallback progress) override;
  // Sends runs and scattered registers in 64-byte blocks. Returns 11 and sends no block for a list
  // without a header.
  Result RegisterWriteList(std::vector<ListEntry> list, std::uint32_t ignored,
                           ProgressCallback progress) override;

  // Appends one entry for each register. Reads 56 per exchange if the chip supports the fast paths.
  Result I2cReadList(std::vector<ListEntry>& list, std::uint32_t slave_address,
                     std::uint32_t start_address, std::uint32_t end_address, std::uint32_t mode,
                     ProgressCallback progress) override;
  Result I2cWriteList(std::vector<ListEntry> list, std::uint32_t option,
                      ProgressCallback progress) override;

  // The feature register as read at the last selection where the chip answered; empty before.
  const std::string& FeatureText() const { return feature_text_; }

 private:
  CommandChannel Commands() const { return CommandChannel(Channel()); }
  StopQuery StopRequested() {
    return [this] { return IsStopRequested(); };
  }
  bool HasFastI2c() const;

  std::string feature_text_;
};

}  // namespace borvan
