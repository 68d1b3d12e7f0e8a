#include "core/device_state.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace virtual_camera {
namespace {

// The state file is little-endian, like all machines that this is built for.
static_assert(std::endian::native == std::endian::little);

class Writer {
 public:
  explicit Writer(std::span<std::uint8_t> bytes) : bytes_(bytes) {}

  void Number(std::uint64_t value, std::size_t size) {
    std::memcpy(bytes_.data() + position_, &value, size);
    position_ += size;
  }
  void Bytes(std::span<const std::uint8_t> source) {
    std::copy(source.begin(), source.end(),
              bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
    position_ += source.size();
  }
  std::size_t Position() const { return position_; }

 private:
  std::span<std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint64_t Number(std::size_t size) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes_.data() + position_, size);
    position_ += size;
    return value;
  }
  std::uint16_t Half() { return static_cast<std::uint16_t>(Number(2)); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
  void Bytes(std::span<std::uint8_t> target) {
    const auto source = bytes_.subspan(position_, target.size());
    std::copy(source.begin(), source.end(), target.begin());
    position_ += target.size();
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

constexpr std::size_t kReplySize = 4 + kPacketSize + 1 + 4;
constexpr std::size_t kLatchesSize = 6 * 2 + 4;
static_assert(1 + 3 * 8 + 8 * kStateFaults + kLatchesSize + kReplySize * kStateSelectors + 2 * 8 <=
              kDeviceFieldsSize);

constexpr std::uint64_t Key(RegisterSpace space, std::uint32_t address) {
  return (static_cast<std::uint64_t>(space.number) << 32) | address;
}

}  // namespace

void WriteDeviceFields(const DeviceFields& fields, std::span<std::uint8_t> bytes) {
  if (bytes.size() != kDeviceFieldsSize) {
    throw std::logic_error("device fields have a fixed size");
  }
  std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
  Writer writer(bytes);
  writer.Number(fields.plugged ? 1 : 0, 1);
  writer.Number(fields.back_at_us, 8);
  writer.Number(fields.busy_until_us, 8);
  writer.Number(fields.fault_fingerprint, 8);
  for (const std::uint64_t counter : fields.fault_counters) {
    writer.Number(counter, 8);
  }
  const Latches& latches = fields.latches;
  for (const std::uint16_t half :
       {latches.wide_value_low, latches.wide_value_high, latches.wide_address_low,
        latches.byte_address_low, latches.byte_address_high, latches.step_register}) {
    writer.Number(half, 2);
  }
  for (const std::uint8_t byte :
       {latches.step_slave, latches.step_mode, latches.read_slave, latches.read_mode}) {
    writer.Number(byte, 1);
  }
  for (const Reply& reply : fields.replies) {
    writer.Number(static_cast<std::uint32_t>(reply.result), 4);
    writer.Bytes(reply.bytes);
    writer.Number(reply.has_second ? 1 : 0, 1);
    writer.Bytes(reply.second);
  }
  writer.Number(fields.untraced, 8);
  writer.Number(fields.process_untraced, 8);
}

DeviceFields ReadDeviceFields(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != kDeviceFieldsSize) {
    throw std::logic_error("device fields have a fixed size");
  }
  Reader reader(bytes);
  DeviceFields fields;
  fields.plugged = reader.Byte() != 0;
  fields.back_at_us = reader.Number(8);
  fields.busy_until_us = reader.Number(8);
  fields.fault_fingerprint = reader.Number(8);
  for (std::uint64_t& counter : fields.fault_counters) {
    counter = reader.Number(8);
  }
  Latches& latches = fields.latches;
  for (std::uint16_t* half :
       {&latches.wide_value_low, &latches.wide_value_high, &latches.wide_address_low,
        &latches.byte_address_low, &latches.byte_address_high, &latches.step_register}) {
    *half = reader.Half();
  }
  for (std::uint8_t* byte :
       {&latches.step_slave, &latches.step_mode, &latches.read_slave, &latches.read_mode}) {
    *byte = reader.Byte();
  }
  for (Reply& reply : fields.replies) {
    reply.result = static_cast<std::int32_t>(static_cast<std::uint32_t>(reader.Number(4)));
    reader.Bytes(reply.bytes);
    reply.has_second = reader.Byte() != 0;
    reader.Bytes(reply.second);
  }
  fields.untraced = reader.Number(8);
  fields.process_untraced = reader.Number(8);
  return fields;
}

std::optional<std::uint32_t> RegisterStore::Find(RegisterSpace space, std::uint32_t address) const {
  const auto found = values_.find(Key(space, address));
  if (found == values_.end()) {
    return std::nullopt;
  }
  return found->second;
}

void RegisterStore::Write(RegisterSpace space, std::uint32_t address, std::uint32_t value) {
  const std::uint64_t key = Key(space, address);
  const auto [place, is_new] = values_.try_emplace(key, value);
  if (!is_new && place->second == value) {
    return;
  }
  place->second = value;
  written_.push_back({key, value});
}

void RegisterStore::Clear() {
  values_.clear();
  written_.clear();
  cleared_ = true;
}

void RegisterStore::ForgetChanges() {
  written_.clear();
  cleared_ = false;
}

void RegisterStore::DropAll() {
  values_.clear();
  ForgetChanges();
}

void DeviceState::LosePower() {
  registers.Clear();
  fields.latches = {};
  fields.replies = {};
  fields.busy_until_us = 0;
}

}  // namespace virtual_camera
