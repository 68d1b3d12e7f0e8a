#include "sweep/swept_camera.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <utility>

#include "support/scripted_platform.h"
#include "virtual_camera/core/blocks.h"
#include "virtual_camera/core/chip.h"
#include "virtual_camera/core/result_codes.h"

namespace borvanusb::sweep {
namespace {

constexpr borvan::Result kDataError = virtual_camera::ResultCode(0x80070017);
constexpr std::size_t kRegisterTag = 3;  // of selector 1; all others have it in byte 0

std::string NameOf(Direction direction) {
  switch (direction) {
    case Direction::kSet:
      return "set";
    case Direction::kGet:
      return "get";
    case Direction::kLength:
      return "length query";
  }
  return "";
}

std::string NameOf(const Fault& fault) {
  switch (fault.kind) {
    case FaultKind::kRefused:
      return "refused";
    case FaultKind::kLies:
      return "lies";
    case FaultKind::kShort:
      return "short answer of " + std::to_string(fault.bytes) + " bytes";
    case FaultKind::kWrongTag:
      return "wrong tag";
  }
  return "";
}

std::uint32_t KeyedRegister(const virtual_camera::RegisterStore& registers,
                            virtual_camera::RegisterSpace space, std::uint32_t address,
                            const std::map<std::uint32_t, std::uint32_t>& initial) {
  if (const auto written = registers.Find(space, address); written) {
    return *written;
  }
  const auto found = initial.find(address);
  return found == initial.end() ? 0 : found->second;
}

}  // namespace

std::string ToText(const Fault& fault, const Transfer& transfer) {
  return "transfer " + std::to_string(fault.at) + " (" + NameOf(transfer.direction) +
         " on selector " + std::to_string(transfer.selector) + ") " + NameOf(fault);
}

// One session's way to the chip.
class SweptCamera::Control : public borvan::ExtensionUnitControl {
 public:
  Control(std::shared_ptr<SweptCamera> camera, std::uint64_t session)
      : camera_(std::move(camera)), session_(session) {}

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override {
    Transfer transfer{Direction::kGet, request.id, length};
    if (data == nullptr) {
      transfer.direction = Direction::kLength;
    } else if (request.flags == borvan_test::kSetFlags) {
      transfer.direction = Direction::kSet;
    }
    const Answer answer = camera_->Run(
        session_, transfer, {static_cast<std::uint8_t*>(data), data == nullptr ? 0 : length});
    bytes_returned = answer.bytes;
    return answer.result;
  }

 private:
  const std::shared_ptr<SweptCamera> camera_;
  const std::uint64_t session_;
};

SweptCamera::SweptCamera(std::string flash_file) {
  configuration_.flash.file = std::move(flash_file);
}

void SweptCamera::PlugIn(const Content& content) {
  const std::lock_guard lock(mutex_);
  configuration_.flash.size = static_cast<std::uint32_t>(content.flash.size());
  configuration_.registers = content.registers;
  configuration_.registers[virtual_camera::kFeatureRegister] = content.fast_i2c ? 0x20 : 0x00;
  configuration_.sensors = content.sensors;
  silent_register_ = content.silent_register;
  state_ = {};
  flash_.reset();
  std::ofstream file(configuration_.flash.file, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(content.flash.data()),
             static_cast<std::streamsize>(content.flash.size()));
  file.close();
  flash_.emplace(configuration_.flash);
}

std::shared_ptr<borvan::ExtensionUnitControl> SweptCamera::Open(const std::optional<Fault>& fault) {
  const std::lock_guard lock(mutex_);
  fault_ = fault;
  seen_.clear();
  open_ = true;
  return std::make_shared<Control>(shared_from_this(), ++session_);
}

void SweptCamera::Close() {
  const std::lock_guard lock(mutex_);
  open_ = false;
}

std::vector<Transfer> SweptCamera::Seen() const {
  const std::lock_guard lock(mutex_);
  return seen_;
}

Bytes SweptCamera::Flash() const {
  const std::lock_guard lock(mutex_);
  Bytes bytes(configuration_.flash.size);
  flash_->Read(0, bytes);
  return bytes;
}

std::uint32_t SweptCamera::Register(std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  return KeyedRegister(state_.registers, virtual_camera::RegisterSpace::Chip(), address,
                       configuration_.registers);
}

std::uint32_t SweptCamera::Sensor(std::uint8_t slave, std::uint32_t address) const {
  const std::lock_guard lock(mutex_);
  const auto sensor =
      std::ranges::find(configuration_.sensors, slave, &virtual_camera::SensorConfiguration::slave);
  return KeyedRegister(state_.registers, virtual_camera::RegisterSpace::Slave(slave), address,
                       sensor->registers);
}

std::uint32_t SweptCamera::LengthOf(std::uint32_t selector) const {
  return configuration_.lengths.at(selector - 1);
}

SweptCamera::Answer SweptCamera::Run(std::uint64_t session, const Transfer& transfer,
                                     std::span<std::uint8_t> bytes) {
  const std::lock_guard lock(mutex_);
  if (!open_ || session != session_) {
    return transfer.direction == Direction::kLength
               ? Answer{virtual_camera::kMoreData, LengthOf(transfer.selector)}
               : Answer{};
  }
  const std::uint64_t number = seen_.size();
  seen_.push_back(transfer);
  if (IsSilent(transfer, bytes)) {
    return {kDataError, 0};
  }
  return fault_ && fault_->at == number ? RunFault(*fault_, transfer, bytes)
                                        : RunGood(transfer, bytes);
}

bool SweptCamera::IsSilent(const Transfer& transfer, std::span<const std::uint8_t> bytes) const {
  if (silent_register_ == 0 || transfer.direction != Direction::kSet) {
    return false;
  }
  constexpr std::uint32_t kBlock = 56;
  const bool is_block = transfer.selector == virtual_camera::kI2cBlockSelector;
  if (!is_block && transfer.selector != virtual_camera::kI2cSelector) {
    return false;
  }
  const std::uint32_t first = static_cast<std::uint32_t>(bytes[6]) << 8U | bytes[7];
  return first <= silent_register_ && silent_register_ < first + (is_block ? kBlock : 1);
}

SweptCamera::Answer SweptCamera::RunFault(const Fault& fault, const Transfer& transfer,
                                          std::span<std::uint8_t> bytes) {
  if (fault.kind == FaultKind::kRefused) {
    return {kDataError, 0};
  }
  if (fault.kind == FaultKind::kLies) {
    return {};
  }
  Bytes reply(bytes.begin(), bytes.end());
  Answer answer = RunGood(transfer, reply);
  if (answer.result < 0) {
    return answer;
  }
  if (fault.kind == FaultKind::kWrongTag) {
    const std::size_t tag =
        transfer.selector == virtual_camera::kRegisterSelector ? kRegisterTag : 0;
    reply.at(tag) ^= 0xFF;
  } else {
    answer.bytes = std::min(answer.bytes, fault.bytes);
  }
  std::copy_n(reply.begin(), answer.bytes, bytes.begin());
  return answer;
}

SweptCamera::Answer SweptCamera::RunGood(const Transfer& transfer, std::span<std::uint8_t> bytes) {
  switch (transfer.direction) {
    case Direction::kLength:
      return {virtual_camera::kMoreData, LengthOf(transfer.selector)};
    case Direction::kSet: {
      virtual_camera::Chip chip(configuration_, state_, *flash_);
      return {chip.Execute(transfer.selector, bytes, {}), 0};
    }
    case Direction::kGet:
      return Get(transfer.selector, bytes);
  }
  return {};
}

SweptCamera::Answer SweptCamera::Get(std::uint32_t selector, std::span<std::uint8_t> bytes) {
  const std::uint32_t length = LengthOf(selector);
  if (bytes.size() < length) {
    return {virtual_camera::kInsufficientBuffer, 0};
  }
  virtual_camera::Reply& reply = state_.fields.replies.at(selector - 1);
  if (reply.result < 0) {
    return {reply.result, 0};
  }
  std::copy_n(reply.bytes.begin(), length, bytes.begin());
  // A wide register's second half.
  if (std::exchange(reply.has_second, false)) {
    std::ranges::copy(reply.second, reply.bytes.begin());
  }
  return {virtual_camera::kSuccess, length};
}

}  // namespace borvanusb::sweep
