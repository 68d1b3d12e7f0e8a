#pragma once

// The state of a powered device except its flash, and the format of this state in the state file.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace virtual_camera {

inline constexpr std::size_t kPacketSize = 64;  // the longest block that the chip reads or answers
inline constexpr std::size_t kStateSelectors = 7;
inline constexpr std::size_t kStateFaults = 64;

// The reply to the next get on a selector.
struct Reply {
  std::int32_t result = 0;
  std::array<std::uint8_t, kPacketSize> bytes{};
  // A wide register read is answered by two gets. These are the first four bytes of the second one.
  bool has_second = false;
  std::array<std::uint8_t, 4> second{};

  bool operator==(const Reply&) const = default;
};

// Halves that arrived in earlier steps of a command.
struct Latches {
  std::uint16_t wide_value_low = 0;
  std::uint16_t wide_value_high = 0;
  std::uint16_t wide_address_low = 0;
  std::uint16_t byte_address_low = 0;
  std::uint16_t byte_address_high = 0;
  std::uint16_t step_register = 0;
  std::uint8_t step_slave = 0;
  std::uint8_t step_mode = 0;
  std::uint8_t read_slave = 0;
  std::uint8_t read_mode = 0;

  bool operator==(const Latches&) const = default;
};

struct DeviceFields {
  bool plugged = true;
  std::uint64_t back_at_us = 0;     // wall clock; 0: an unplugged camera does not return
  std::uint64_t busy_until_us = 0;  // wall clock: the flash erases or programs until then
  std::uint64_t fault_fingerprint = 0;
  std::array<std::uint64_t, kStateFaults> fault_counters{};
  Latches latches;
  std::array<Reply, kStateSelectors> replies;
  // The number of the last transfers that are missing in a trace because it could not be written:
  // in the configured trace, and in the trace of the last process that had one.
  std::uint64_t untraced = 0;
  std::uint64_t process_untraced = 0;

  bool operator==(const DeviceFields&) const = default;
};

inline constexpr std::size_t kDeviceFieldsSize = 1216;

// Always fills or reads all of `bytes`, which holds kDeviceFieldsSize bytes.
void WriteDeviceFields(const DeviceFields& fields, std::span<std::uint8_t> bytes);
DeviceFields ReadDeviceFields(std::span<const std::uint8_t> bytes);

// The address space of a register: the chip itself or an I2C slave.
struct RegisterSpace {
  std::uint32_t number = 0;  // 0: the chip, 1 + address: a slave

  static constexpr RegisterSpace Chip() { return {0}; }
  static constexpr RegisterSpace Slave(std::uint8_t address) { return {1U + address}; }
};

// Registers that were written since power-on; all others have their initial values.
class RegisterStore {
 public:
  struct Record {
    std::uint64_t key;  // space above bit 32, address below
    std::uint32_t value;
  };

  std::optional<std::uint32_t> Find(RegisterSpace space, std::uint32_t address) const;
  void Write(RegisterSpace space, std::uint32_t address, std::uint32_t value);
  void Clear();

  const std::unordered_map<std::uint64_t, std::uint32_t>& Values() const { return values_; }

  // For the state file: the changes since ForgetChanges, and the values that it read.
  const std::vector<Record>& Written() const { return written_; }
  bool Cleared() const { return cleared_; }
  void ForgetChanges();
  void Restore(const Record& record) { values_[record.key] = record.value; }
  void DropAll();

 private:
  std::unordered_map<std::uint64_t, std::uint32_t> values_;
  std::vector<Record> written_;
  bool cleared_ = false;
};

struct DeviceState {
  DeviceFields fields;
  RegisterStore registers;

  // Resets the part of the state that a device loses without power.
  void LosePower();
};

}  // namespace virtual_camera
