// The device object's list of cameras and its selection.

#include <exception>
#include <utility>

#include "device/borvan_usb_base.h"
#include "device/device_path.h"

namespace borvan {
namespace {

// Systems before 6.0 (Windows Vista) have no reliable friendly names.
bool NamesAreUnreliable(const std::optional<SystemVersion>& version) {
  constexpr double kFirstReliable = 6.0;
  constexpr double kMinorWeight = 0.1;
  return version.has_value() && version->major + version->minor * kMinorWeight < kFirstReliable;
}

}  // namespace

Result BorvanUSBBase::EnumerateDevices() {
  const bool path_as_name = NamesAreUnreliable(platform_->GetSystemVersion());
  const std::string former_path = selected_.path;
  devices_.clear();

  VideoInputListing listing = platform_->ListVideoInputs();
  if (listing.outcome == VideoInputListing::Outcome::kNoDeviceEnumerator) {
    return listing.result;
  }
  if (listing.outcome == VideoInputListing::Outcome::kNoCategory) {
    ClearSelection();
    return listing.result;
  }
  for (VideoInputDevice& device : listing.devices) {
    if (!device.path.has_value()) {
      continue;
    }
    const std::u16string path = LowerCasePath(*device.path);
    if (!IsUsbPath(path) || !device.friendly_name.has_value()) {
      continue;
    }
    DeviceEntry entry;
    entry.path = platform_->ToAnsi(path);
    entry.name = path_as_name ? entry.path : platform_->ToAnsi(*device.friendly_name);
    entry.vid = ReadPathId(path, u"vid_");
    entry.pid = ReadPathId(path, u"pid_");
    entry.moniker = std::move(device.moniker);
    devices_.push_back(std::move(entry));
  }
  RestoreSelection(former_path);
  return listing.result;
}

void BorvanUSBBase::ClearSelection() {
  selected_index_ = 0;
  selected_ = DeviceEntry{};
  selected_moniker_.reset();
}

// Only the index follows the camera: its texts and the channel stay as they were until the host
// selects again.
void BorvanUSBBase::RestoreSelection(const std::string& former_path) {
  if (devices_.empty()) {
    ClearSelection();
    return;
  }
  if (selected_index_ < 0 || selected_index_ >= GetDeviceCount()) {
    return;
  }
  if (devices_[static_cast<std::size_t>(selected_index_)].path == former_path) {
    return;
  }
  for (std::size_t i = 0; i < devices_.size(); ++i) {
    if (devices_[i].path == former_path) {
      selected_index_ = static_cast<std::int32_t>(i);
      return;
    }
  }
}

Result BorvanUSBBase::SelectDevice(std::uint32_t index) {
  if (index >= devices_.size()) {
    return kFailed;
  }
  selected_index_ = static_cast<std::int32_t>(index);
  selected_ = devices_[index];
  selected_moniker_ = std::exchange(selected_.moniker, nullptr);
  channel_.Close();
  try {
    return OpenExtensionUnit();
  } catch (const std::exception&) {
    return kFailed;
  }
}

Result BorvanUSBBase::OpenExtensionUnit() {
  const std::shared_ptr<VideoInputMoniker> moniker = selected_moniker_.lock();
  platform_->OpenVendorNodes(
      moniker.get(), [this](std::shared_ptr<ExtensionUnitControl> control, std::uint32_t node_id) {
        channel_.Open(std::move(control), node_id);
      });
  return kOk;
}

std::int32_t BorvanUSBBase::GetSelectedIndex() {
  return selected_index_;
}

DeviceEntry BorvanUSBBase::GetSelectedDevice() {
  DeviceEntry device = selected_;
  device.moniker = selected_moniker_.lock();
  return device;
}

std::vector<DeviceEntry> BorvanUSBBase::GetDeviceList() {
  return devices_;
}

std::int32_t BorvanUSBBase::GetDeviceCount() {
  return static_cast<std::int32_t>(devices_.size());
}

}  // namespace borvan
