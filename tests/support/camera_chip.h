#pragma once

// A camera's registers, sensors and flash in memory, behind its vendor node.

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "device/device_platform.h"

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

// A camera's vendor node with registers and a flash. May be used from several threads. As the real
// chip does, it prepares a reply when it takes a command; a get answers with the last one prepared.
class MemoryChip : public borvan::ExtensionUnitControl {
 public:
  // What a transfer answers instead of reaching the chip; nullopt lets it through. May block, and
  // may throw: it runs outside the chip's lock.
  using Interception = std::function<std::optional<borvan::Result>(const Transfer&)>;

  explicit MemoryChip(std::size_t flash_size = 0x10000);

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override;

  // To be called while no transfer runs.
  void Intercept(Interception interception);
  // Which fault, if any, strikes a transfer that is not intercepted. Runs outside the chip's lock.
  using FaultChoice = std::function<std::optional<Fault>(const Transfer&)>;
  void Strike(FaultChoice choice);
  // Bytes that a get with kShort answers.
  void PutShortAnswer(std::size_t bytes);
  void ReportLength(std::uint32_t selector, std::uint32_t length);
  void PutRegister(std::uint32_t address, std::uint32_t value);
  void PutFlash(std::uint32_t address, const std::vector<std::uint8_t>& bytes);
  // What the next get on selector 2 answers, until a register that is known here is read.
  void PutI2cReply(const std::vector<std::uint8_t>& reply);
  void PutI2cRegister(std::uint8_t slave, std::uint32_t address, std::uint32_t value);

  std::uint32_t Register(std::uint32_t address) const;
  std::vector<std::uint8_t> Flash(std::uint32_t address, std::size_t count) const;

  std::vector<Transfer> Transfers() const;
  // The bytes of all sets on a selector, in order.
  std::vector<std::vector<std::uint8_t>> Sent(std::uint32_t selector) const;
  void ForgetTransfers();

 private:
  void Take(std::uint32_t selector, const std::vector<std::uint8_t>& block);
  void TakeRegisterCommand(const std::vector<std::uint8_t>& block);
  void TakeFlashCommand(const std::vector<std::uint8_t>& block);
  std::vector<std::uint8_t> Answer(std::uint32_t selector);
  void PrepareRegisterReply();
  void TakeRegisterBlock(const std::vector<std::uint8_t>& block);
  void TakeI2cCommand(const std::vector<std::uint8_t>& block);
  std::vector<std::uint8_t> FlashPacket(std::uint32_t address) const;

  mutable std::mutex mutex_;
  Interception interception_;
  std::map<std::uint32_t, std::uint32_t> lengths_;
  std::map<std::uint32_t, std::uint32_t> registers_;
  std::vector<std::uint8_t> flash_;
  std::vector<std::uint8_t> i2c_reply_;
  std::vector<std::uint8_t> flash_reply_;
  std::vector<std::uint8_t> packet_reply_;
  std::vector<std::uint8_t> block_reply_;
  std::vector<std::vector<std::uint8_t>> register_replies_;  // the gets to come; the last one stays
  std::map<std::pair<std::uint8_t, std::uint32_t>, std::uint32_t> i2c_registers_;
  FaultChoice fault_choice_;
  std::size_t short_answer_ = 5;
  std::vector<Transfer> transfers_;
  std::uint32_t register_address_ = 0;
  std::uint32_t register_value_ = 0;
};

}  // namespace borvan_test
