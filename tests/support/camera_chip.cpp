#include "support/camera_chip.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "core/chip.h"
#include "core/result_codes.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kRegisterSelector = 1;
constexpr auto kRefusal = static_cast<borvan::Result>(0x80070017);

}  // namespace

virtual_camera::CameraConfiguration UsualCamera() {
  virtual_camera::CameraConfiguration configuration;
  configuration.flash.size = virtual_camera::kFlashMinimum;
  configuration.absent_slave = virtual_camera::AbsentSlave::kZeros;
  return configuration;
}

MemoryChip::MemoryChip(const virtual_camera::CameraConfiguration& configuration,
                       const std::vector<std::uint8_t>& flash)
    : configuration_(configuration) {
  configuration_.flash.file = folder_.Put("flash", std::string(flash.begin(), flash.end()));
  flash_.emplace(configuration_.flash);
}

borvan::Result MemoryChip::KsProperty(const borvan::NodePropertyRequest& request, void* data,
                                      std::uint32_t length, std::uint32_t& bytes_returned) {
  const std::span bytes(static_cast<std::uint8_t*>(data), data == nullptr ? 0 : length);
  Transfer transfer{request, data == nullptr, std::vector<std::uint8_t>(length)};
  const bool is_set = request.flags == kSetFlags;
  if (is_set) {
    transfer.bytes.assign(bytes.begin(), bytes.end());
  }
  Interception interception;
  FaultChoice fault_choice;
  Tampering tampering;
  {
    const std::lock_guard lock(mutex_);
    transfers_.push_back(transfer);
    interception = interception_;
    fault_choice = fault_choice_;
    tampering = tampering_;
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
  if (is_set && tampering) {
    tampering(request.id, transfer.bytes);
  }
  const std::lock_guard lock(mutex_);
  if (data == nullptr) {
    bytes_returned = configuration_.lengths.at(request.id - 1);
    return virtual_camera::kMoreData;
  }
  return is_set ? Set(request.id, transfer.bytes) : Get(request.id, fault, bytes, bytes_returned);
}

borvan::Result MemoryChip::Set(std::uint32_t selector, std::span<const std::uint8_t> block) {
  return virtual_camera::Chip(configuration_, state_, *flash_).Execute(selector, block, {});
}

borvan::Result MemoryChip::Get(std::uint32_t selector, std::optional<Fault> fault,
                               std::span<std::uint8_t> bytes, std::uint32_t& bytes_returned) {
  virtual_camera::Reply& reply = state_.fields.replies.at(selector - 1);
  if (reply.result < 0) {
    return reply.result;
  }
  auto answer = reply.bytes;
  // A wide register's second half.
  if (std::exchange(reply.has_second, false)) {
    std::ranges::copy(reply.second, reply.bytes.begin());
  }
  if (fault == Fault::kWrongTag) {
    answer.at(selector == kRegisterSelector ? 3 : 0) ^= 0xFFU;
  }
  std::size_t size = bytes.size();
  if (fault == Fault::kShort) {
    size = std::min(size, short_answer_);
  }
  bytes_returned = static_cast<std::uint32_t>(size);
  std::copy_n(answer.begin(), std::min(size, answer.size()), bytes.begin());
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

void MemoryChip::TamperWith(Tampering tampering) {
  const std::lock_guard lock(mutex_);
  tampering_ = std::move(tampering);
}

void MemoryChip::ReportLength(std::uint32_t selector, std::uint32_t length) {
  const std::lock_guard lock(mutex_);
  configuration_.lengths.at(selector - 1) = length;
}

void MemoryChip::PutRegister(std::uint32_t address, std::uint32_t value) {
  const std::lock_guard lock(mutex_);
  state_.registers.Write(virtual_camera::RegisterSpace::Chip(), address, value);
}

void MemoryChip::PutFlash(std::uint32_t address, const std::vector<std::uint8_t>& bytes) {
  const std::lock_guard lock(mutex_);
  std::fstream file(configuration_.flash.file, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(address);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

void MemoryChip::PutI2cRegister(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                                std::uint32_t value) {
  const std::lock_guard lock(mutex_);
  std::erase_if(configuration_.sensors, [&](const auto& sensor) { return sensor.slave == slave; });
  configuration_.sensors.push_back({.slave = slave, .mode = mode, .registers = {}});
  state_.registers.Write(virtual_camera::RegisterSpace::Slave(slave), address, value);
}

void MemoryChip::PowerCycle() {
  const std::lock_guard lock(mutex_);
  state_.LosePower();
}

std::uint32_t MemoryChip::Register(std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  const auto initial = configuration_.registers.find(address);
  return state_.registers.Find(virtual_camera::RegisterSpace::Chip(), address)
      .value_or(initial == configuration_.registers.end() ? 0 : initial->second);
}

std::uint32_t MemoryChip::I2cRegister(std::uint8_t slave, std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  const auto sensor =
      std::ranges::find(configuration_.sensors, slave, &virtual_camera::SensorConfiguration::slave);
  const auto initial = sensor->registers.find(address);
  return state_.registers.Find(virtual_camera::RegisterSpace::Slave(slave), address)
      .value_or(initial == sensor->registers.end() ? 0 : initial->second);
}

virtual_camera::RegisterStore MemoryChip::Written() const {
  const std::lock_guard lock(mutex_);
  return state_.registers;
}

std::vector<std::uint8_t> MemoryChip::Flash(std::uint32_t address, std::size_t count) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::uint8_t> bytes(count);
  flash_->Read(address, bytes);
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

}  // namespace borvan_test
