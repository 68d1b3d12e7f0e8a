#pragma once

// One virtual camera: the device side of the vendor extension unit, as its transfers see it.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "core/configuration.h"

namespace virtual_camera {

// HRESULT of a transfer and the bytes that it returned (a set returns none).
struct Answer {
  std::int32_t result = 0;
  std::uint32_t bytes = 0;
};

// Any number of objects, in any number of processes, may serve the same camera at once. The state
// of the device (registers, flash, the reply for the next get) is shared through its files. All
// members may be called on any thread.
class Camera {
 public:
  // Opens state, flash and trace file and creates the missing ones.
  // Throws ConfigurationError if a file can't be opened or is unsuitable.
  explicit Camera(const CameraConfiguration& configuration);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  // The length that `selector` (1 to 7) reports: result 0x800700EA, bytes = the length.
  // 0x80070490 for an unknown selector, 0x8007048F while unplugged.
  Answer QueryLength(std::uint32_t selector);

  // Sends a command block to the chip. Returns 0, or 0x8007001F if the block is shorter than its
  // command or the chip does not know it. Other errors are those of QueryLength.
  Answer Set(std::uint32_t selector, std::span<const std::uint8_t> data);

  // Returns the reply that the last Set on `selector` prepared, padded with zeros to the reported
  // length. If there is no reply, returns only zeros. Fails with 0x8007007A if `data` is smaller
  // than the reported length, and with the failure of the command, such as an absent I2C slave.
  // Other errors are those of QueryLength.
  Answer Get(std::uint32_t selector, std::span<std::uint8_t> data);

  // The function that is called if a fault unplugs the camera. It is called after the transfer, on
  // the same thread, with the milliseconds until the camera returns by itself, or nullopt if it
  // does not return. Must be set before the first transfer. The function is not called if another
  // process or SetPlugged unplugs the camera.
  std::function<void(std::optional<std::uint32_t>)> on_unplug;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

// The following functions use only the files, and work while any number of cameras run. They throw
// ConfigurationError if the state file can't be used. IsPlugged and DescribeState create and change
// no file. If the time has come for an unplugged camera to return, they treat it as plugged in.

// Resets the registers of chip and sensors to their initial values and discards a pending reply.
// Keeps the flash and the fault counters.
void PowerCycle(const CameraConfiguration& configuration);

// Plugging in a camera that was unplugged is also a power cycle, because the bus powers the camera.
void SetPlugged(const CameraConfiguration& configuration, bool plugged);
bool IsPlugged(const CameraConfiguration& configuration);

// Resets the transfer counters of all faults.
void ResetFaultCounters(const CameraConfiguration& configuration);

// Returns a description of the device's state, as lines of text.
std::string DescribeState(const CameraConfiguration& configuration);

}  // namespace virtual_camera
