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

// Any number of objects, in any number of processes, may serve the same camera at once: what the
// device knows (registers, flash, the reply that waits for a get) is shared through its files.
// Every member may be called from any thread.
class Camera {
 public:
  // Opens state, flash and trace file and creates the missing ones.
  // Throws ConfigurationError when one can't be opened or doesn't fit.
  explicit Camera(const CameraConfiguration& configuration);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  // The length that `selector` (1 to 7) reports: result 0x800700EA, bytes = the length.
  // 0x80070490 for an unknown selector, 0x8007048F while unplugged.
  Answer QueryLength(std::uint32_t selector);

  // Hands a command block to the chip. 0; 0x8007001F for a block that is shorter than its command
  // or that the chip does not know; else as QueryLength.
  Answer Set(std::uint32_t selector, std::span<const std::uint8_t> data);

  // Takes the reply that the last Set on `selector` prepared, filled with zeros to the reported
  // length; nothing but zeros when none did. 0x8007007A when `data` is smaller than the reported
  // length; a failure that the command met (an absent I2C slave, say); else as QueryLength.
  Answer Get(std::uint32_t selector, std::span<std::uint8_t> data);

  // Called, on the thread of the transfer and after it is done, when a fault unplugs the camera:
  // milliseconds until it is back by itself, nullopt: for good. Set it before the first transfer.
  // Unplugging by another process or by SetPlugged calls nothing here.
  std::function<void(std::optional<std::uint32_t>)> on_unplug;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

// The following work on the files alone, beside any number of running cameras. They throw
// ConfigurationError when the state file can't be used. IsPlugged and DescribeState only look: they
// make and change no file, and answer for a camera that is due as if it were back already.

// Chip and sensor registers get their initial values, a reply that waits is lost; flash and fault
// counters stay.
void PowerCycle(const CameraConfiguration& configuration);

// Plugging in a camera that was unplugged is a power cycle too: the camera lives on bus power.
void SetPlugged(const CameraConfiguration& configuration, bool plugged);
bool IsPlugged(const CameraConfiguration& configuration);

// Every fault counts its transfers from the start again.
void ResetFaultCounters(const CameraConfiguration& configuration);

// The device's state for people, lines of text.
std::string DescribeState(const CameraConfiguration& configuration);

}  // namespace virtual_camera
