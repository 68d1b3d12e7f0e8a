#include "protocol/borvan_usb_q7.h"

#include <algorithm>

#include "base/hexadecimal_text.h"

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

BorvanUsb_Q7::LengthReport BorvanUsb_Q7::QueryLength(Selector selector) {
  LengthReport report;
  report.result = ChannelGetLength(static_cast<std::uint32_t>(selector), &report.length);
  if (HasFailed(report.result)) {
    report.length = 0;
  } else if (report.length > kLargestControlLength) {
    report = {kInvalidData, 0};
  }
  return report;
}

std::vector<std::uint8_t> BorvanUsb_Q7::MakeBlock(std::uint32_t length,
                                                  std::size_t command_length) {
  return std::vector<std::uint8_t>(std::max<std::size_t>(length, command_length));
}

Result BorvanUsb_Q7::Set(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) {
  return ChannelSet(static_cast<std::uint32_t>(selector), static_cast<std::int32_t>(length),
                    block.data());
}

Result BorvanUsb_Q7::Get(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) {
  return ChannelGet(static_cast<std::uint32_t>(selector), static_cast<std::int32_t>(length),
                    block.data());
}

}  // namespace borvan
