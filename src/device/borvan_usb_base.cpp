#include "device/borvan_usb_base.h"

#include <borvan_usb.h>

#include <mutex>
#include <utility>

#include "base/never_destroyed.h"

namespace borvan {
namespace {

// "The device is gone", in the form of an HRESULT. GetLastError never returns a value in this form.
constexpr std::uint32_t kNeverGivenError = 0x800701B1;

constexpr std::uint32_t kStatusKeyMask = 0xFFFF;

// References that outlive their device object on purpose: releasing them could call into a driver
// that a job still uses, or into COM on a thread that has left COM.
class KeptReferences {
 public:
  void Keep(std::vector<DeviceEntry> devices, std::shared_ptr<ExtensionUnitControl> control) {
    const std::lock_guard lock(mutex_);
    for (DeviceEntry& device : devices) {
      monikers_.push_back(std::move(device.moniker));
    }
    if (control != nullptr) {
      controls_.push_back(std::move(control));
    }
  }

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<VideoInputMoniker>> monikers_;
  std::vector<std::shared_ptr<ExtensionUnitControl>> controls_;
};

NeverDestroyed<KeptReferences> g_kept_references;

}  // namespace

BorvanUSBBase::BorvanUSBBase(std::unique_ptr<DevicePlatform> platform)
    : platform_(std::move(platform)) {
  for (std::uint32_t code = kFirstStatusCode; code <= kLastStatusCode; ++code) {
    status_messages_.emplace(static_cast<std::int32_t>(code),
                             borvan_status_message(kStatusCodeBase + code));
  }
  platform_->InitialiseCom();
}

BorvanUSBBase::~BorvanUSBBase() {
  try {
    g_kept_references.value.Keep(std::move(devices_), channel_.Abandon());
  } catch (...) {  // NOLINT(bugprone-empty-catch): without memory for the list they are released
  }
}

Result BorvanUSBBase::FlashWrite(std::string /*address*/, std::string /*value*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::FlashRead(std::string /*address*/, std::string& /*value*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::FlashErase(std::string /*address*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::FlashWriteImage(std::vector<std::uint8_t> /*image*/,
                                      std::uint32_t /*start_address*/,
                                      ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::FlashQuickReadImage(std::vector<std::uint8_t>& /*output*/,
                                          std::uint32_t /*start_address*/,
                                          std::uint32_t /*end_address*/,
                                          ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::RegisterWriteList(std::vector<ListEntry> /*list*/, std::uint32_t /*ignored*/,
                                        ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::RegisterReadList(std::vector<ListEntry>& /*list*/,
                                       std::uint32_t /*start_address*/,
                                       std::uint32_t /*end_address*/,
                                       ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::RegisterWrite(std::string /*address*/, std::string /*value*/,
                                    std::uint8_t /*width_flag*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::RegisterRead(std::string /*address*/, std::string& /*value*/,
                                   std::uint8_t /*width_flag*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::I2cWriteList(std::vector<ListEntry> /*list*/, std::uint32_t /*option*/,
                                   ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::I2cReadList(std::vector<ListEntry>& /*list*/, std::uint32_t /*slave_address*/,
                                  std::uint32_t /*start_address*/, std::uint32_t /*end_address*/,
                                  std::uint32_t /*mode*/, ProgressCallback /*progress*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::ReservedA(std::string /*first*/, std::string /*second*/,
                                std::string /*third*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::ReservedB(std::string /*first*/, std::string /*second*/) {
  return kNotImplemented;
}

bool BorvanUSBBase::CheckDevicePresent(std::string path, std::string /*name*/) {
  return platform_->TryOpenExclusively(path) != kNeverGivenError;
}

bool BorvanUSBBase::ProbeDevice() {
  std::string value;
  return Succeeded(RegisterRead("0", value, 0));
}

std::string BorvanUSBBase::GetErrorText(std::uint32_t code) {
  if ((code & kCustomerBit) != 0) {
    const auto found = status_messages_.find(static_cast<std::int32_t>(code & kStatusKeyMask));
    if (found != status_messages_.end()) {
      return found->second;
    }
  }
  return platform_->SystemMessage(code);
}

Result BorvanUSBBase::ChannelGetLength(std::uint32_t /*selector*/, std::uint32_t* /*length*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::ChannelSet(std::uint32_t /*selector*/, std::int32_t /*length*/,
                                 void* /*buffer*/) {
  return kNotImplemented;
}

Result BorvanUSBBase::ChannelGet(std::uint32_t /*selector*/, std::int32_t /*length*/,
                                 void* /*buffer*/) {
  return kNotImplemented;
}

bool BorvanUSBBase::IsStopRequested() {
  return jobs_.stop_requested;
}

}  // namespace borvan
