#include "api/device_info.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace borvan {
namespace {

using Record = std::array<char, sizeof(UsbDeviceInfo)>;

void PutText(Record& record, std::size_t offset, const std::string& text) {
  // With its NUL, but only up to the end of the record.
  const std::size_t length = std::min(text.size() + 1, record.size() - offset);
  std::memcpy(record.data() + offset, text.c_str(), length);
}

// Four upper-case digits and deliberately no NUL: the two IDs are adjacent.
void PutId(Record& record, std::size_t offset, std::int32_t id) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto number = static_cast<std::uint32_t>(id);
  record[offset] = kDigits[(number >> 12U) & 0xFU];
  record[offset + 1] = kDigits[(number >> 8U) & 0xFU];
  record[offset + 2] = kDigits[(number >> 4U) & 0xFU];
  record[offset + 3] = kDigits[number & 0xFU];
}

}  // namespace

UsbDeviceInfo MakeDeviceInfo(const DeviceEntry& device) {
  Record record{};
  PutText(record, offsetof(UsbDeviceInfo, path), device.path);
  PutText(record, offsetof(UsbDeviceInfo, name), device.name);
  PutId(record, offsetof(UsbDeviceInfo, vendor_id), device.vid);
  PutId(record, offsetof(UsbDeviceInfo, product_id), device.pid);
  UsbDeviceInfo info;
  std::memcpy(&info, record.data(), sizeof(info));
  return info;
}

}  // namespace borvan
