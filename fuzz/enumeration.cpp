// Any device paths and names that a system may list: which ones are cameras, their IDs, and the
// records for hosts.

#include <algorithm>
#include <string>
#include <vector>

#include "api/device_info.h"
#include "device/device_path.h"
#include "protocol/borvan_usb_q7.h"
#include "support/check.h"
#include "support/input.h"
#include "support/memory_platform.h"
#include "support/number_model.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::Input;

std::u16string TakeWideText(Input& input) {
  std::u16string wide;
  const bool with_high_bytes = input.Choice(4) == 3;
  for (const char c : input.Text()) {
    const auto low = static_cast<unsigned char>(c);
    wide.push_back(static_cast<char16_t>(with_high_bytes ? low << 8 | low : low));
  }
  return wide;
}

std::u16string ModelLowerCase(std::u16string path) {
  for (char16_t& c : path) {
    const std::u16string capitals = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    const std::size_t place = capitals.find(c);
    c = place == std::u16string::npos ? c : u"abcdefghijklmnopqrstuvwxyz"[place];
  }
  return path;
}

// Four characters after the marker. A missing marker counts as found one position before the path.
std::int32_t ModelId(const std::u16string& path, const std::u16string& marker) {
  const std::size_t found = path.find(marker);
  const std::size_t begin =
      found == std::u16string::npos ? marker.size() - 1 : found + marker.size();
  std::string digits;
  for (std::size_t i = begin; i < std::min(begin + 4, path.size()); ++i) {
    digits += path[i] < 0x80 ? static_cast<char>(path[i]) : '?';
  }
  return borvan_fuzz::ModelLong(digits);
}

// Texts may exceed their field; IDs are the low 16 bits.
std::string ModelRecord(const borvan::DeviceEntry& device) {
  std::string record(248, '\0');
  for (const auto& [text, place] : {std::pair(device.path, 0), std::pair(device.name, 120)}) {
    const std::string with_end = text + '\0';
    for (std::size_t i = 0; i < with_end.size(); ++i) {
      const std::size_t at = static_cast<std::size_t>(place) + i;
      if (at < record.size()) {
        record[at] = with_end[i];
      }
    }
  }
  for (const auto& [id, place] : {std::pair(device.vid, 240), std::pair(device.pid, 244)}) {
    for (int digit = 0; digit < 4; ++digit) {
      record[static_cast<std::size_t>(place + digit)] =
          "0123456789ABCDEF"[static_cast<std::uint32_t>(id) >> (12 - 4 * digit) & 0xF];
    }
  }
  return record;
}

void CheckRecord(const borvan::DeviceEntry& device) {
  const UsbDeviceInfo info = borvan::MakeDeviceInfo(device);
  const auto* const bytes = reinterpret_cast<const char*>(&info);
  CheckEqual(std::string(bytes, sizeof info), ModelRecord(device), "a record");
  char text[kBorvanTextFieldSize + 1];
  borvan_copy_text(info.path, text);
  borvan_copy_text(info.name, text);
  CheckEqual(static_cast<std::uint32_t>(borvan_id_number(info.vendor_id)),
             static_cast<std::uint32_t>(device.vid) & 0xFFFF, "a vendor ID read back");
}

// The cameras among the system's devices, in the system's order.
std::vector<borvan::DeviceEntry> ModelList(const borvan_fuzz::SystemScript& system) {
  std::vector<borvan::DeviceEntry> list;
  for (const borvan_fuzz::ListedDevice& device : system.devices) {
    if (!device.path || !device.name) {
      continue;
    }
    const std::u16string path = ModelLowerCase(*device.path);
    if (path.find(u"usb#") == std::u16string::npos) {
      continue;
    }
    borvan::DeviceEntry entry;
    entry.path = borvan_fuzz::NarrowText(path);
    const bool old = system.version && system.version->major < 6;
    entry.name = old ? entry.path : borvan_fuzz::NarrowText(*device.name);
    entry.vid = ModelId(path, u"vid_");
    entry.pid = ModelId(path, u"pid_");
    list.push_back(entry);
  }
  return list;
}

void TakeSystem(Input& input) {
  borvan_fuzz::SystemScript& system = borvan_fuzz::TheSystem();
  system = {};
  const std::uint32_t version = input.Choice(16);
  system.version = version == 0 ? std::nullopt : std::optional(borvan::SystemVersion{version, 0});
  while (!input.Empty() && system.devices.size() < 50) {
    borvan_fuzz::ListedDevice device;
    const std::uint32_t kind = input.Choice(8);
    if (kind != 1) {
      device.path = (kind >= 4 ? u"\\\\?\\usb#vid_" : u"") + TakeWideText(input);
    }
    if (kind != 2) {
      device.name = TakeWideText(input);
    }
    system.devices.push_back(device);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // One object for all inputs, because each destroyed object leaks references to its devices.
  static auto& device = *new borvan::BorvanUsb_Q7(borvan_fuzz::MakeMemoryPlatform());
  Input input(data, size);
  TakeSystem(input);
  CheckEqual(static_cast<std::uint32_t>(device.EnumerateDevices()), 1, "result of the listing");

  const std::vector<borvan::DeviceEntry> expected = ModelList(borvan_fuzz::TheSystem());
  const std::vector<borvan::DeviceEntry> found = device.GetDeviceList();
  CheckEqual(found.size(), expected.size(), "number of cameras");
  for (std::size_t i = 0; i < found.size(); ++i) {
    CheckEqual(found[i].path, expected[i].path, "path of a camera");
    CheckEqual(found[i].name, expected[i].name, "name of a camera");
    CheckEqual(static_cast<std::uint32_t>(found[i].vid),
               static_cast<std::uint32_t>(expected[i].vid), "vendor ID");
    CheckEqual(static_cast<std::uint32_t>(found[i].pid),
               static_cast<std::uint32_t>(expected[i].pid), "product ID");
    CheckRecord(found[i]);
  }
  return 0;
}
