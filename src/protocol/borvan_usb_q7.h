#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/borvan_usb_base.h"
#include "protocol/command_channel.h"
#include "protocol/stop_query.h"

namespace borvan {

// The device object with the chip's command protocol. It hands each operation to the function of
// the chip's that does it, which takes numbers: the headers of this folder describe them. Single
// accesses send nothing and answer kNullPointer without a channel; the bulk operations let the
// channel's answer take its course.
class BorvanUsb_Q7 : public BorvanUSBBase {
 public:
  using BorvanUSBBase::BorvanUSBBase;

  // Selects, then reads the feature register of whatever camera is selected now: a refused index
  // reads it again from the camera that stays selected. The result is that of the selection.
  Result SelectDevice(std::uint32_t index) override;

  Result ChannelGetLength(std::uint32_t selector, std::uint32_t* length) override;
  Result ChannelSet(std::uint32_t selector, std::int32_t length, void* buffer) override;
  Result ChannelGet(std::uint32_t selector, std::int32_t length, void* buffer) override;

  // Width flag: a write takes the wide form for every flag but 0, a read for 1 alone.
  Result RegisterWrite(std::string address, std::string value, std::uint8_t width_flag) override;
  // Replaces `value` only when the reply is one to this read; a foreign reply is no failure.
  Result RegisterRead(std::string address, std::string& value, std::uint8_t width_flag) override;

  // Mode: i2c_mode; the option byte is handed to the chip as it is.
  Result I2cWrite(std::string slave, std::string register_address, std::string value,
                  std::int32_t mode, std::uint32_t option);
  // Replaces `value` on success in the modes 0 to 5.
  Result I2cRead(std::string slave, std::string register_address, std::string& value,
                 std::int32_t mode, std::uint32_t option);

  Result FlashWrite(std::string address, std::string value) override;
  // 0 and eight digits in `value`; 1 and `value` untouched when there is no usable answer.
  Result FlashRead(std::string address, std::string& value) override;
  Result FlashErase(std::string address) override;

  // Erases every sector that the image covers and writes it in pieces of 60 bytes; blank pieces are
  // passed over. Reports (0, 1 to 99).
  Result FlashWriteImage(std::vector<std::uint8_t> image, std::uint32_t start_address,
                         ProgressCallback progress) override;

  // Appends the inclusive range to `output`. A failing transfer is repeated until a stop request.
  Result FlashQuickReadImage(std::vector<std::uint8_t>& output, std::uint32_t start_address,
                             std::uint32_t end_address, ProgressCallback progress) override;

  // Appends the page markers and one entry for each register; only the low 16 bits of the addresses
  // bound the run, whose page is that of the start.
  Result RegisterReadList(std::vector<ListEntry>& list, std::uint32_t start_address,
                          std::uint32_t end_address, ProgressCallback progress) override;
  // Runs and scattered registers in 64-byte blocks. 11 and nothing sent for a list without header.
  Result RegisterWriteList(std::vector<ListEntry> list, std::uint32_t ignored,
                           ProgressCallback progress) override;

  // Appends one entry for each register, 56 an exchange where the chip has the fast paths.
  Result I2cReadList(std::vector<ListEntry>& list, std::uint32_t slave_address,
                     std::uint32_t start_address, std::uint32_t end_address, std::uint32_t mode,
                     ProgressCallback progress) override;
  Result I2cWriteList(std::vector<ListEntry> list, std::uint32_t option,
                      ProgressCallback progress) override;

  // The feature register as it was read at the last selection that was answered; empty before.
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
