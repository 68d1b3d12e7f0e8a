#include "support/camera_chip.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace borvan_test {
namespace {

constexpr std::uint32_t kRegisterSelector = 1;
constexpr std::uint32_t kI2cSelector = 2;
constexpr std::uint32_t kFlashSelector = 3;
constexpr std::uint32_t kFastWriteSelector = 4;
constexpr std::uint32_t kFastReadSelector = 5;
constexpr std::uint32_t kBlockSelector = 7;

constexpr auto kRefusal = static_cast<borvan::Result>(0x80070017);
constexpr auto kTooShort = static_cast<borvan::Result>(0x8007001F);
constexpr std::size_t kPacketSize = 64;
constexpr std::size_t kBlockHead = 8;

// The answer of a length query that went well.
constexpr auto kMoreData = static_cast<borvan::Result>(0x800700EA);

std::size_t ShortestCommand(std::uint32_t selector) {
  constexpr std::array<std::size_t, 8> kShortest = {0, 4, 0, 9, 5, 4, 0, 8};
  return selector < kShortest.size() ? kShortest[selector] : 0;
}

std::uint32_t BigEndian(const std::vector<std::uint8_t>& block, std::size_t at) {
  return std::uint32_t{block.at(at)} << 24U | std::uint32_t{block.at(at + 1)} << 16U |
         std::uint32_t{block.at(at + 2)} << 8U | block.at(at + 3);
}

void PutHalf(std::uint32_t& number, const std::vector<std::uint8_t>& block, unsigned shift) {
  const std::uint32_t half = std::uint32_t{block.at(2)} << 8U | block.at(1);
  number = (number & ~(0xFFFFU << shift)) | half << shift;
}

}  // namespace

MemoryChip::MemoryChip(std::size_t flash_size)
    : lengths_{{kRegisterSelector, 4},   {kI2cSelector, 12},      {kFlashSelector, 11},
               {kFastWriteSelector, 64}, {kFastReadSelector, 64}, {6, 64},
               {kBlockSelector, 64}},
      flash_(flash_size, 0xFF),
      packet_reply_(kPacketSize),
      block_reply_(kPacketSize),
      register_replies_{{0, 0, 0, 0}} {}

borvan::Result MemoryChip::KsProperty(const borvan::NodePropertyRequest& request, void* data,
                                      std::uint32_t length, std::uint32_t& bytes_returned) {
  Transfer transfer{request, data == nullptr, {}};
  transfer.bytes.resize(length);
  const bool is_set = request.flags == kSetFlags;
  if (is_set && length != 0) {
    std::memcpy(transfer.bytes.data(), data, length);
  }
  Interception interception;
  FaultChoice fault_choice;
  {
    const std::lock_guard lock(mutex_);
    transfers_.push_back(transfer);
    interception = interception_;
    fault_choice = fault_choice_;
  }
  if (interception) {
    if (const auto answer = interception(transfer)) {
      return *answer;
    }
  }
  const std::optional<Fault> fault = fault_choice ? fault_choice(transfer) : std::nullopt;
  if (fault == Fault::kRefused || fault == Fault::kLies) {
    return fault == Fault::kRefused ? kRefusal : 0;
  }
  const std::lock_guard lock(mutex_);
  if (data == nullptr) {
    bytes_returned = lengths_[request.id];
    return kMoreData;
  }
  if (is_set) {
    if (length < ShortestCommand(request.id)) {
      return kTooShort;
    }
    Take(request.id, transfer.bytes);
    return 0;
  }
  std::vector<std::uint8_t> answer = Answer(request.id);
  if (fault == Fault::kWrongTag && !answer.empty()) {
    answer.at(request.id == kRegisterSelector ? 3 : 0) ^= 0xFFU;
  }
  bytes_returned = length;
  if (fault == Fault::kShort) {
    bytes_returned = static_cast<std::uint32_t>(std::min<std::size_t>(length, short_answer_));
  }
  std::copy_n(answer.begin(), std::min<std::size_t>(bytes_returned, answer.size()),
              static_cast<std::uint8_t*>(data));
  return 0;
}

void MemoryChip::Strike(FaultChoice choice) {
  const std::lock_guard lock(mutex_);
  fault_choice_ = std::move(choice);
}

void MemoryChip::PutShortAnswer(std::size_t bytes) {
  const std::lock_guard lock(mutex_);
  short_answer_ = bytes;
}

void MemoryChip::Intercept(Interception interception) {
  const std::lock_guard lock(mutex_);
  interception_ = std::move(interception);
}

void MemoryChip::ReportLength(std::uint32_t selector, std::uint32_t length) {
  const std::lock_guard lock(mutex_);
  lengths_[selector] = length;
}

void MemoryChip::PutRegister(std::uint32_t address, std::uint32_t value) {
  const std::lock_guard lock(mutex_);
  registers_[address] = value;
}

void MemoryChip::PutFlash(std::uint32_t address, const std::vector<std::uint8_t>& bytes) {
  const std::lock_guard lock(mutex_);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    flash_.at(address + i) = bytes[i];
  }
}

void MemoryChip::PutI2cReply(const std::vector<std::uint8_t>& reply) {
  const std::lock_guard lock(mutex_);
  i2c_reply_ = reply;
}

void MemoryChip::PutI2cRegister(std::uint8_t slave, std::uint32_t address, std::uint32_t value) {
  const std::lock_guard lock(mutex_);
  i2c_registers_[{slave, address}] = value;
}

std::uint32_t MemoryChip::Register(std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  const auto found = registers_.find(address);
  return found == registers_.end() ? 0 : found->second;
}

std::vector<std::uint8_t> MemoryChip::Flash(std::uint32_t address, std::size_t count) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::uint8_t> bytes(count);
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = flash_.at(address + i);
  }
  return bytes;
}

std::vector<Transfer> MemoryChip::Transfers() const {
  const std::lock_guard lock(mutex_);
  return transfers_;
}

std::vector<std::vector<std::uint8_t>> MemoryChip::Sent(std::uint32_t selector) const {
  std::vector<std::vector<std::uint8_t>> sent;
  for (const Transfer& transfer : Transfers()) {
    if (transfer.request.id == selector && transfer.request.flags == kSetFlags) {
      sent.push_back(transfer.bytes);
    }
  }
  return sent;
}

void MemoryChip::ForgetTransfers() {
  const std::lock_guard lock(mutex_);
  transfers_.clear();
}

void MemoryChip::Take(std::uint32_t selector, const std::vector<std::uint8_t>& block) {
  switch (selector) {
    case kRegisterSelector:
      TakeRegisterCommand(block);
      break;
    case kI2cSelector:
      TakeI2cCommand(block);
      break;
    case kFlashSelector:
      TakeFlashCommand(block);
      break;
    case kBlockSelector:
      TakeRegisterBlock(block);
      break;
    case kFastWriteSelector:
      for (std::size_t i = 4; i < block.size(); ++i) {
        const std::size_t at = BigEndian(block, 0) + i - 4;
        if (at < flash_.size()) {
          flash_[at] = block[i];
        }
      }
      break;
    case kFastReadSelector:
      packet_reply_ = FlashPacket(BigEndian(block, 0));
      break;
    default:
      break;
  }
}

void MemoryChip::TakeRegisterCommand(const std::vector<std::uint8_t>& block) {
  switch (block.at(0)) {
    case 0x12:
      PutHalf(register_value_, block, 0);
      break;
    case 0x22:
      PutHalf(register_value_, block, 16);
      break;
    case 0x41:
    case 0x42:
      PutHalf(register_address_, block, 0);
      break;
    case 0x81:
      PutHalf(register_address_, block, 16);
      PrepareRegisterReply();
      break;
    case 0x82:
      PutHalf(register_address_, block, 16);
      registers_[register_address_] = register_value_;
      break;
    case 0x24:
      PutHalf(register_address_, block, block.at(3) == 0x18 ? 0 : 16);
      if (block.at(3) == 0x58) {
        register_replies_ = {
            {0x24, static_cast<std::uint8_t>(registers_[register_address_]), 0x00, 0x28}};
      }
      break;
    case 0x28:
      if (block.at(3) == 0x48) {
        registers_[register_address_] = block.at(1);
      } else {
        PutHalf(register_address_, block, block.at(3) == 0x08 ? 0 : 16);
      }
      break;
    default:
      break;
  }
}

void MemoryChip::TakeFlashCommand(const std::vector<std::uint8_t>& block) {
  const std::size_t address = BigEndian(block, 1);
  const auto in_flash = [&](std::size_t at) { return at < flash_.size(); };
  flash_reply_ = block;
  if (block.at(0) == 0x32) {
    for (std::size_t at = address; at < address + 4096 && in_flash(at); ++at) {
      flash_[at] = 0xFF;
    }
  }
  for (std::size_t i = 0; i < 4; ++i) {
    if (block.at(0) == 0x38 && in_flash(address + i)) {
      flash_[address + i] = block.at(5 + i);
    } else if (block.at(0) == 0x34 && in_flash(address + i)) {
      flash_reply_.at(5 + i) = flash_[address + i];
    }
  }
}

void MemoryChip::TakeI2cCommand(const std::vector<std::uint8_t>& block) {
  constexpr std::size_t kAddress = 4;
  constexpr std::size_t kValue = 8;
  if (block.size() < kValue + 4) {
    return;
  }
  const auto key = std::pair(block[1], BigEndian(block, kAddress));
  if (block[0] == 0) {
    i2c_registers_[key] = BigEndian(block, kValue);
  } else if (const auto found = i2c_registers_.find(key);
             block[0] == 1 && found != i2c_registers_.end()) {
    i2c_reply_ = block;
    for (unsigned i = 0; i < 4; ++i) {
      i2c_reply_[kValue + i] = static_cast<std::uint8_t>(found->second >> (8 * (3 - i)));
    }
  }
}

// Reads are understood; lists are only noted.
void MemoryChip::TakeRegisterBlock(const std::vector<std::uint8_t>& block) {
  if (block.at(0) != 1 || block.at(3) != 0x38) {
    return;
  }
  block_reply_ = block;
  for (std::size_t i = kBlockHead; i < kPacketSize; ++i) {
    block_reply_[i] = static_cast<std::uint8_t>(
        registers_[BigEndian(block, 4) + static_cast<std::uint32_t>(i - kBlockHead)]);
  }
}

std::vector<std::uint8_t> MemoryChip::FlashPacket(std::uint32_t address) const {
  std::vector<std::uint8_t> packet(kPacketSize);
  for (std::size_t i = 0; i < packet.size(); ++i) {
    const std::size_t at = address + i;
    packet[i] = at < flash_.size() ? flash_[at] : 0xFF;
  }
  return packet;
}

std::vector<std::uint8_t> MemoryChip::Answer(std::uint32_t selector) {
  switch (selector) {
    case kRegisterSelector: {
      std::vector<std::uint8_t> reply = register_replies_.front();
      if (register_replies_.size() > 1) {
        register_replies_.erase(register_replies_.begin());
      }
      return reply;
    }
    case kI2cSelector:
      return i2c_reply_;
    case kFlashSelector:
      return flash_reply_;
    case kFastReadSelector:
      return packet_reply_;
    case kBlockSelector:
      return block_reply_;
    default:
      return {};
  }
}

void MemoryChip::PrepareRegisterReply() {
  const std::uint32_t value = registers_[register_address_];
  const auto byte = [&](unsigned index) { return static_cast<std::uint8_t>(value >> (8 * index)); };
  register_replies_ = {{0x00, byte(0), byte(1), 0x11}, {0x00, byte(2), byte(3), 0x21}};
}

}  // namespace borvan_test
