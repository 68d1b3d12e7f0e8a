#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/list_entry.h"
#include "base/progress_callback.h"
#include "base/result.h"
#include "device/device_entry.h"
#include "device/device_platform.h"
#include "device/extension_unit_channel.h"
#include "device/job_state.h"

namespace borvan {

// The device object: the list of cameras, the selected one, the channel to its extension unit and
// the state of the jobs that run on it. It declares every operation; those of the chip are
// implemented by the derived class and return kNotImplemented here.
//
// Numbers are passed as hexadecimal text (hexadecimal_text.h). Results are negative on failure.
// Only one thread, the host's, may enumerate and select cameras; any thread may make transfers.
class BorvanUSBBase {
 public:
  // Makes COM usable on the calling thread.
  explicit BorvanUSBBase(std::unique_ptr<DevicePlatform> platform);

  BorvanUSBBase(const BorvanUSBBase&) = delete;
  BorvanUSBBase& operator=(const BorvanUSBBase&) = delete;

  // The order of the virtual functions is part of the interface and must not change.

  // Rebuilds the list of cameras and keeps the selection if its camera is still listed. Returns the
  // last result of the system: 1 after a complete enumeration.
  virtual Result EnumerateDevices();

  // Selects the camera at `index` and opens its extension unit. Returns kFailed and changes nothing
  // if the index is beyond the list. Throws a `const char*` message if the camera's filter or a
  // vendor node can't be opened; the selection has then changed.
  virtual Result SelectDevice(std::uint32_t index);

  // Finds the vendor nodes of the selected camera and keeps the control of the last one. Returns 0
  // and leaves the channel closed if the camera has none.
  virtual Result OpenExtensionUnit();

  virtual std::int32_t GetSelectedIndex();
  virtual DeviceEntry GetSelectedDevice();
  virtual std::vector<DeviceEntry> GetDeviceList();
  virtual std::int32_t GetDeviceCount();

  virtual Result FlashWrite(std::string address, std::string value);
  virtual Result FlashRead(std::string address, std::string& value);
  virtual Result FlashErase(std::string address);
  virtual Result FlashWriteImage(std::vector<std::uint8_t> image, std::uint32_t start_address,
                                 ProgressCallback progress);
  virtual Result FlashQuickReadImage(std::vector<std::uint8_t>& output, std::uint32_t start_address,
                                     std::uint32_t end_address, ProgressCallback progress);
  virtual Result RegisterWriteList(std::vector<ListEntry> list, std::uint32_t ignored,
                                   ProgressCallback progress);
  virtual Result RegisterReadList(std::vector<ListEntry>& list, std::uint32_t start_address,
                                  std::uint32_t end_address, ProgressCallback progress);
  virtual Result RegisterWrite(std::string address, std::string value, std::uint8_t width_flag);
  virtual Result RegisterRead(std::string address, std::string& value, std::uint8_t width_flag);
  virtual Result I2cWriteList(std::vector<ListEntry> list, std::uint32_t option,
                              ProgressCallback progress);
  virtual Result I2cReadList(std::vector<ListEntry>& list, std::uint32_t slave_address,
                             std::uint32_t start_address, std::uint32_t end_address,
                             std::uint32_t mode, ProgressCallback progress);
  virtual Result ReservedA(std::string first, std::string second, std::string third);
  virtual Result ReservedB(std::string first, std::string second);

  // Opens `path` exclusively and closes it again. Returns true whether or not it opens, except for
  // one error number that the system never returns. Hosts rely on this.
  virtual bool CheckDevicePresent(std::string path, std::string name);

  // True when the chip's register 0 can be read.
  virtual bool ProbeDevice();

  // Returns the text for a result: the library's own for a StatusCode, otherwise the system's, or
  // an empty one if there is none.
  virtual std::string GetErrorText(std::uint32_t code);

  virtual Result ChannelGetLength(std::uint32_t selector, std::uint32_t* length);
  virtual Result ChannelSet(std::uint32_t selector, std::int32_t length, void* buffer);
  virtual Result ChannelGet(std::uint32_t selector, std::int32_t length, void* buffer);
  virtual bool IsStopRequested();

  // Releases no COM object: a job may still use the control for transfers, and the host may have
  // left COM already.
  virtual ~BorvanUSBBase();

  JobState& Jobs() { return jobs_; }
  const JobState& Jobs() const { return jobs_; }

  // 1 if binary files omit the page markers at the start of a register run.
  std::int32_t MarkerSkip() const { return marker_skip_; }

 protected:
  const ExtensionUnitChannel& Channel() const { return channel_; }

 private:
  void ClearSelection();
  void RestoreSelection(const std::string& former_path);

  const std::unique_ptr<DevicePlatform> platform_;
  JobState jobs_;
  std::vector<DeviceEntry> devices_;
  // The selected camera as it was when selected. Only the list refers to its moniker.
  DeviceEntry selected_;
  std::weak_ptr<VideoInputMoniker> selected_moniker_;
  std::int32_t selected_index_ = 0;
  ExtensionUnitChannel channel_;
  std::map<std::int32_t, std::string> status_messages_;
  std::int32_t marker_skip_ = 1;
};

}  // namespace borvan
