#include "core/i2c_bus.h"

#include "core/blocks.h"

namespace virtual_camera {

const SensorConfiguration* I2cBus::Find(std::uint8_t slave) const {
  for (const SensorConfiguration& sensor : configuration_.sensors) {
    if (sensor.slave == slave) {
      return &sensor;
    }
  }
  return nullptr;
}

std::optional<std::uint8_t> I2cBus::ModeOf(std::uint8_t slave) const {
  const SensorConfiguration* sensor = Find(slave);
  if (sensor == nullptr) {
    return std::nullopt;
  }
  return KnownMode(sensor->mode);
}

std::optional<std::uint32_t> I2cBus::Read(std::uint8_t slave, std::uint8_t mode,
                                          std::uint32_t address) const {
  const SensorConfiguration* sensor = Find(slave);
  if (sensor == nullptr || sensor->mode != mode) {
    return std::nullopt;
  }
  const std::uint32_t reached = LowBytes(address, kWidthModes[KnownMode(mode)].address_bytes);
  if (const auto written = registers_.Find(RegisterSpace::Slave(slave), reached); written) {
    return written;
  }
  const auto initial = sensor->registers.find(reached);
  return initial == sensor->registers.end() ? 0 : initial->second;
}

bool I2cBus::Write(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                   std::uint32_t value) {
  const SensorConfiguration* sensor = Find(slave);
  if (sensor == nullptr || sensor->mode != mode) {
    return false;
  }
  const WidthMode width = kWidthModes[KnownMode(mode)];
  registers_.Write(RegisterSpace::Slave(slave), LowBytes(address, width.address_bytes),
                   LowBytes(value, width.data_bytes));
  return true;
}

}  // namespace virtual_camera
