#include "sweep/swept_camera.h"

#include <mutex>
#include <utility>

#include "core/blocks.h"
#include "core/result_codes.h"

namespace borvanusb::sweep {
namespace {

Direction DirectionOf(const borvan_test::Transfer& transfer) {
  if (transfer.is_length_query) {
    return Direction::kLength;
  }
  return transfer.request.flags == borvan_test::kSetFlags ? Direction::kSet : Direction::kGet;
}

std::uint32_t LengthOf(std::uint32_t selector) {
  return virtual_camera::CameraConfiguration().lengths.at(selector - 1);
}

// A get with a buffer too small for the selector's reply.
bool IsTooSmall(const borvan_test::Transfer& transfer) {
  return DirectionOf(transfer) == Direction::kGet &&
         transfer.bytes.size() < LengthOf(transfer.request.id);
}

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

// Whether a set requests the register that never answers, alone or in a block.
bool AsksSilent(const borvan_test::Transfer& transfer, std::uint32_t silent) {
  if (silent == 0 || DirectionOf(transfer) != Direction::kSet) {
    return false;
  }
  constexpr std::uint32_t kBlock = 56;
  const bool is_block = transfer.request.id == virtual_camera::kI2cBlockSelector;
  if (!is_block && transfer.request.id != virtual_camera::kI2cSelector) {
    return false;
  }
  const std::uint32_t first =
      static_cast<std::uint32_t>(transfer.bytes[6]) << 8U | transfer.bytes[7];
  return first <= silent && silent < first + (is_block ? kBlock : 1);
}

}  // namespace

std::string ToText(const Fault& fault, const Transfer& transfer) {
  return "transfer " + std::to_string(fault.at) + " (" + NameOf(transfer.direction) +
         " on selector " + std::to_string(transfer.selector) + ") " + NameOf(fault);
}

// The connection of one session to the chip. Transfers are made one at a time.
class SweptCamera::Control : public borvan::ExtensionUnitControl {
 public:
  explicit Control(std::shared_ptr<borvan_test::MemoryChip> chip) : chip_(std::move(chip)) {}

  void Close() {
    const std::lock_guard lock(mutex_);
    chip_.reset();
  }

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override {
    const std::lock_guard lock(mutex_);
    if (chip_) {
      return chip_->KsProperty(request, data, length, bytes_returned);
    }
    bytes_returned = 0;
    if (data != nullptr) {
      return 0;
    }
    bytes_returned = LengthOf(request.id);
    return virtual_camera::kMoreData;
  }

 private:
  std::mutex mutex_;
  std::shared_ptr<borvan_test::MemoryChip> chip_;
};

void SweptCamera::PlugIn(const Content& content) {
  virtual_camera::CameraConfiguration configuration;
  configuration.flash.size = static_cast<std::uint32_t>(content.flash.size());
  configuration.registers = content.registers;
  configuration.registers[virtual_camera::kFeatureRegister] = content.fast_i2c ? 0x20 : 0x00;
  configuration.sensors = content.sensors;
  flash_size_ = content.flash.size();
  silent_register_ = content.silent_register;
  chip_ = std::make_shared<borvan_test::MemoryChip>(configuration, content.flash);
}

std::shared_ptr<borvan::ExtensionUnitControl> SweptCamera::Open(const std::optional<Fault>& fault) {
  Close();
  chip_->ForgetTransfers();
  const auto count = std::make_shared<std::uint64_t>(0);
  chip_->Intercept([fault, count, silent = silent_register_](
                       const borvan_test::Transfer& transfer) -> std::optional<borvan::Result> {
    const bool is_struck = (*count)++ == (fault ? fault->at : std::uint64_t(-1));
    if (AsksSilent(transfer, silent)) {
      return virtual_camera::ResultCode(0x80070017);
    }
    return !is_struck && IsTooSmall(transfer) ? std::optional(virtual_camera::kInsufficientBuffer)
                                              : std::nullopt;
  });
  chip_->PutShortAnswer(fault ? fault->bytes : 0);
  chip_->Strike([fault, count](const borvan_test::Transfer&) {
    return fault && *count == fault->at + 1 ? std::optional(fault->kind) : std::nullopt;
  });
  control_ = std::make_shared<Control>(chip_);
  return control_;
}

void SweptCamera::Close() {
  if (control_) {
    control_->Close();
  }
}

std::vector<Transfer> SweptCamera::Seen() const {
  std::vector<Transfer> seen;
  for (const borvan_test::Transfer& transfer : chip_->Transfers()) {
    seen.push_back({DirectionOf(transfer), transfer.request.id,
                    static_cast<std::uint32_t>(transfer.bytes.size())});
  }
  return seen;
}

}  // namespace borvanusb::sweep
