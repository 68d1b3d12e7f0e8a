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

// How a register is reached: of the chip or of a device on the I2C bus, in one access or several.
struct RegisterAccess {
  bool on_i2c = false;
  RegisterWidth width = RegisterWidth::kByte;  // of the chip's registers
  I2cTarget target;                            // of a device on the bus
  std::uint32_t address = 0;                   // of its lowest access
  std::uint32_t accesses = 1;
  std::uint32_t access_bits = 8;
  std::uint32_t step = 1;                  // addresses from one access to the next
  std::uint64_t mask = ~std::uint64_t{0};  // the register's highest value
  const AccessRule* rule = nullptr;        // null: upwards, nothing beside it
  bool read_once = false;                  // reading changes it: it is read once and on its own
};

RegisterAccess AccessOf(const NamedRegister& named);
// A register of the chip by its number, and one of a device on the I2C bus.
RegisterAccess ChipAccess(std::uint32_t address, bool wide);
RegisterAccess I2cAccess(const I2cTarget& target, std::uint32_t address);

// Reads in one piece: registers in a row of one device, or one register by itself.
struct ReadPiece {
  RegisterAccess of;  // the device
  Range range;        // addresses, in a row
  // The register, as place in what was planned, if it is read by itself, by its rule.
  std::optional<std::size_t> alone;
};

// How registers are read with as few transfers as their devices allow: those whose addresses lie in
// a row are read in one piece. No address is read that no register has.
std::vector<ReadPiece> PlanReads(std::span<const RegisterAccess> registers);

// What registers hold.
struct RegisterReading {
  std::vector<std::uint64_t> values;
  bool checked = true;  // false: some were read in blocks that the chip does not confirm one by one
};

// Reads registers, with progress when there are many. Throws as Camera does.
RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera,
                        Context& context);
// The same without progress, for reading again and again.
RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera);
std::uint64_t ReadOne(const RegisterAccess& access, Camera& camera);
void WriteOne(const RegisterAccess& access, std::uint64_t value, Camera& camera);

// Of one access: the bits of a register's value that it takes, as the place of the lowest of them.
unsigned ShiftOf(const RegisterAccess& access, std::uint32_t index);

}  // namespace borvanusb
