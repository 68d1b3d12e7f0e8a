#include "support/scripted_platform.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

namespace borvan_test {
namespace {

constexpr std::uint32_t kRegisterSelector = 1;
constexpr std::uint32_t kI2cSelector = 2;
constexpr std::uint32_t kFlashSelector = 3;
constexpr std::uint32_t kFastWriteSelector = 4;
constexpr std::uint32_t kFastReadSelector = 5;

// The answer of a length query that went well.
constexpr auto kMoreData = static_cast<borvan::Result>(0x800700EA);

class CameraMoniker : public borvan::VideoInputMoniker {
 public:
  explicit CameraMoniker(Camera camera) : camera_(std::move(camera)) {}
  const Camera& Get() const { return camera_; }

 private:
  const Camera camera_;
};

std::uint32_t BigEndian(const std::vector<std::uint8_t>& block, std::size_t at) {
  return std::uint32_t{block.at(at)} << 24U | std::uint32_t{block.at(at + 1)} << 16U |
         std::uint32_t{block.at(at + 2)} << 8U | block.at(at + 3);
}

void PutHalf(std::uint32_t& number, const std::vector<std::uint8_t>& block, unsigned shift) {
  const std::uint32_t half = std::uint32_t{block.at(2)} << 8U | block.at(1);
  number = (number & ~(0xFFFFU << shift)) | half << shift;
}

}  // namespace

bool WaitUntil(const std::function<bool()>& holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

MemoryChip::MemoryChip(std::size_t flash_size)
    : lengths_{{kRegisterSelector, 4},
               {kI2cSelector, 12},
               {kFlashSelector, 11},
               {kFastWriteSelector, 64},
               {kFastReadSelector, 64}},
      flash_(flash_size, 0xFF) {}

borvan::Result MemoryChip::KsProperty(const borvan::NodePropertyRequest& request, void* data,
                                      std::uint32_t length, std::uint32_t& bytes_returned) {
  Transfer transfer{request, data == nullptr, {}};
  transfer.bytes.resize(length);
  const bool is_set = request.flags == kSetFlags;
  if (is_set && length != 0) {
    std::memcpy(transfer.bytes.data(), data, length);
  }
  Interception interception;
  {
    const std::lock_guard lock(mutex_);
    transfers_.push_back(transfer);
    interception = interception_;
  }
  if (interception) {
    if (const auto answer = interception(transfer)) {
      return *answer;
    }
  }
  const std::lock_guard lock(mutex_);
  if (data == nullptr) {
    bytes_returned = lengths_[request.id];
    return kMoreData;
  }
  if (is_set) {
    Take(request.id, transfer.bytes);
    return 0;
  }
  const std::vector<std::uint8_t> answer = Answer(request.id);
  std::copy_n(answer.begin(), std::min<std::size_t>(length, answer.size()),
              static_cast<std::uint8_t*>(data));
  bytes_returned = length;
  return 0;
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
    case kFlashSelector:
      TakeFlashCommand(block);
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
      flash_read_address_ = BigEndian(block, 0);
      break;
    default:
      break;
  }
}

void MemoryChip::TakeRegisterCommand(const std::vector<std::uint8_t>& block) {
  wide_ = (block.at(0) & 0x0FU) == 1;
  low_half_given_ = false;
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
      break;
    case 0x82:
      PutHalf(register_address_, block, 16);
      registers_[register_address_] = register_value_;
      break;
    case 0x24:
      PutHalf(register_address_, block, block.at(3) == 0x18 ? 0 : 16);
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

std::vector<std::uint8_t> MemoryChip::Answer(std::uint32_t selector) {
  switch (selector) {
    case kRegisterSelector:
      return RegisterReply();
    case kI2cSelector:
      return i2c_reply_;
    case kFlashSelector:
      return flash_reply_;
    case kFastReadSelector: {
      std::vector<std::uint8_t> packet(64);
      for (std::size_t i = 0; i < packet.size(); ++i) {
        const std::size_t at = flash_read_address_ + i;
        packet[i] = at < flash_.size() ? flash_[at] : 0xFF;
      }
      return packet;
    }
    default:
      return {};
  }
}

std::vector<std::uint8_t> MemoryChip::RegisterReply() {
  const std::uint32_t value = registers_[register_address_];
  const auto byte = [&](unsigned index) { return static_cast<std::uint8_t>(value >> (8 * index)); };
  if (!wide_) {
    return {0x24, byte(0), 0x00, 0x28};
  }
  low_half_given_ = !low_half_given_;
  if (low_half_given_) {
    return {0x00, byte(0), byte(1), 0x11};
  }
  return {0x00, byte(2), byte(3), 0x21};
}

ScriptedPlatform::ScriptedPlatform(std::shared_ptr<PlatformScript> script)
    : script_(std::move(script)) {}

void ScriptedPlatform::InitialiseCom() {
  ++script_->com_initialisations;
}

std::optional<borvan::SystemVersion> ScriptedPlatform::GetSystemVersion() {
  return script_->version;
}

borvan::VideoInputListing ScriptedPlatform::ListVideoInputs() {
  borvan::VideoInputListing listing;
  listing.outcome = script_->outcome;
  listing.result = script_->listing_result;
  script_->listed.clear();
  if (listing.outcome != borvan::VideoInputListing::Outcome::kWalked) {
    return listing;
  }
  for (const Camera& camera : script_->cameras) {
    const auto moniker = std::make_shared<CameraMoniker>(camera);
    script_->listed.push_back(moniker);
    listing.devices.push_back({camera.path, camera.friendly_name, moniker});
  }
  return listing;
}

void ScriptedPlatform::OpenVendorNodes(borvan::VideoInputMoniker* moniker,
                                       const borvan::VendorNodeHandler& keep) {
  const auto* const camera = dynamic_cast<CameraMoniker*>(moniker);
  if (camera == nullptr) {
    throw "ERROR: gcap.pmVideo->BindToObject failed";
  }
  for (const VendorNode& node : camera->Get().vendor_nodes) {
    keep(node.control, node.id);
  }
  if (camera->Get().raise) {
    camera->Get().raise();
  }
}

std::string ScriptedPlatform::ToAnsi(std::u16string_view wide) {
  script_->converted.emplace_back(wide);
  std::string text;
  for (const char16_t c : wide) {
    text += c < 0x80 ? static_cast<char>(c) : '?';
  }
  return text;
}

std::uint32_t ScriptedPlatform::TryOpenExclusively(const std::string& path) {
  script_->opened_paths.push_back(path);
  return script_->open_error;
}

std::string ScriptedPlatform::SystemMessage(std::uint32_t code) {
  script_->asked_messages.push_back(code);
  const auto found = script_->messages.find(code);
  return found == script_->messages.end() ? "" : found->second;
}

Camera MakeCamera(char16_t letter, std::shared_ptr<MemoryChip> chip) {
  Camera camera;
  camera.path = u"\\\\?\\usb#vid_1234&pid_5678#";
  camera.path->push_back(letter);
  camera.friendly_name = u"Camera ";
  camera.friendly_name->push_back(letter);
  if (chip != nullptr) {
    camera.vendor_nodes.push_back({std::move(chip), 3});
  }
  return camera;
}

}  // namespace borvan_test
