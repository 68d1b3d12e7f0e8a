#pragma once

// The virtual camera's chip behind a camera's vendor node, without an operating system between.

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "core/configuration.h"
#include "core/device_state.h"
#include "core/nor_flash.h"
#include "device/device_platform.h"
#include "support/temporary_folder.h"

namespace borvan_test {

// One property request as the camera saw it.
struct Transfer {
  borvan::NodePropertyRequest request;
  bool is_length_query = false;
  std::vector<std::uint8_t> bytes;  // what was sent; zeros of the asked length for a get
};

// Request flags of the two directions.
constexpr std::uint32_t kGetFlags = 0x10000001;
constexpr std::uint32_t kSetFlags = 0x10000002;

// What becomes of one transfer. Only kRefused gives a negative answer.
enum class Fault {
  kRefused,   // it does not reach the chip
  kLies,      // nor does it here: a get leaves the buffer as it was, a length query tells no length
  kShort,     // a get answers the first bytes alone
  kWrongTag,  // a get's tag byte comes inverted
};

// 64 KiB of flash, and nobody on the I2C bus, which reads as 0.
virtual_camera::CameraConfiguration UsualCamera();

// A camera's vendor node with registers, sensors and a flash. May be used from several threads.
class MemoryChip : public borvan::ExtensionUnitControl {
 public:
  // What a transfer answers instead of reaching the chip; nullopt lets it through. May block, and
  // may throw: it runs outside the chip's lock.
  using Interception = std::function<std::optional<borvan::Result>(const Transfer&)>;

  // The flash begins with `flash`; the rest is erased.
  explicit MemoryChip(const virtual_camera::CameraConfiguration& configuration = UsualCamera(),
                      const std::vector<std::uint8_t>& flash = {});

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override;

  // To be called while no transfer runs.
  void Intercept(Interception interception);
  // Which fault, if any, strikes a transfer that is not intercepted. Runs outside the chip's lock.
  using FaultChoice = std::function<std::optional<Fault>(const Transfer&)>;
  void Strike(FaultChoice choice);
  // Changes blocks on their way to the chip, outside its lock.
  using Tampering = std::function<void(std::uint32_t selector, std::span<std::uint8_t> block)>;
  void TamperWith(Tampering tampering);
  // Bytes that a get with kShort answers.
  void PutShortAnswer(std::size_t bytes);
  void ReportLength(std::uint32_t selector, std::uint32_t length);
  void PutRegister(std::uint32_t address, std::uint32_t value);
  void PutFlash(std::uint32_t address, const std::vector<std::uint8_t>& bytes);
  // From now on the slave is there, with the width mode.
  void PutI2cRegister(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                      std::uint32_t value);
  // Registers get their initial values.
  void PowerCycle();

  std::uint32_t Register(std::uint32_t address) const;
  std::uint32_t I2cRegister(std::uint8_t slave, std::uint32_t address) const;
  // All registers that were written since power-on.
  virtual_camera::RegisterStore Written() const;
  std::vector<std::uint8_t> Flash(std::uint32_t address, std::size_t count) const;

  std::vector<Transfer> Transfers() const;
  // The bytes of all sets on a selector, in order.
  std::vector<std::vector<std::uint8_t>> Sent(std::uint32_t selector) const;
  void ForgetTransfers();

 private:
  borvan::Result Set(std::uint32_t selector, std::span<const std::uint8_t> block);
  borvan::Result Get(std::uint32_t selector, std::optional<Fault> fault,
                     std::span<std::uint8_t> bytes, std::uint32_t& bytes_returned);

  TemporaryFolder folder_;
  mutable std::mutex mutex_;
  Interception interception_;
  FaultChoice fault_choice_;
  Tampering tampering_;
  std::size_t short_answer_ = 5;
  std::vector<Transfer> transfers_;
  virtual_camera::CameraConfiguration configuration_;
  virtual_camera::DeviceState state_;
  std::optional<virtual_camera::NorFlash> flash_;
};

}  // namespace borvan_test
