#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "command/context.h"
#include "names/register_names.h"

namespace borvanusb {

// How to access a register of the chip or of a device on the I2C bus, in one access or several.
struct RegisterAccess {
  bool on_i2c = false;
  RegisterWidth width = RegisterWidth::kByte;  // for registers of the chip
  I2cTarget target;                            // for devices on the I2C bus
  std::uint32_t address = 0;                   // of the access with the lowest address
  std::uint32_t accesses = 1;
  std::uint32_t access_bits = 8;
  std::uint32_t step = 1;                  // address distance between two accesses
  std::uint64_t mask = ~std::uint64_t{0};  // the register's highest value
  const AccessRule* rule = nullptr;        // null: upwards, without additional writes
  bool read_once = false;                  // reading changes it: read only once, separately
};

RegisterAccess AccessOf(const NamedRegister& named);
// A register by its number: of the chip, or of a device on the I2C bus.
RegisterAccess ChipAccess(std::uint32_t address, bool wide);
RegisterAccess I2cAccess(const I2cTarget& target, std::uint32_t address);

// One read operation: adjacent registers of one device, or a single register.
struct ReadPiece {
  RegisterAccess of;  // the device
  Range range;        // contiguous
  // Set for a register that is read separately, by its own rule: its index in the planned
  // registers.
  std::optional<std::size_t> alone;
};

// Plans the reads with as few transfers as the devices allow: adjacent registers are read together.
// Addresses without a register are never read.
std::vector<ReadPiece> PlanReads(std::span<const RegisterAccess> registers);

// The values of registers.
struct RegisterReading {
  std::vector<std::uint64_t> values;
  bool checked = true;  // false: read in blocks, without the chip's confirmation for each register
};

// Reads registers, and shows progress if there are many. Throws the exceptions of Camera.
RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera,
                        Context& context);
// Reads registers without progress, for repeated reading.
RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera);
std::uint64_t ReadOne(const RegisterAccess& access, Camera& camera);
void WriteOne(const RegisterAccess& access, std::uint64_t value, Camera& camera);

// All bits of the register's value, and the hexadecimal digits of its number.
std::uint64_t ValueBits(const RegisterAccess& access);
int ValueDigits(const RegisterAccess& access);

// The position in the register value of the lowest bit that access `index` transfers.
unsigned ShiftOf(const RegisterAccess& access, std::uint32_t index);

}  // namespace borvanusb
