#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "command/context.h"

namespace borvanusb {

// A write to a register of the chip or of a device on the I2C bus.
struct RegisterWrite {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::optional<std::uint32_t> mask;  // only these bits are changed
  bool verify = false;
  std::string name;  // for messages: "register 0x01a3"
  int address_digits = 0;
  int value_digits = 0;
};

// Throws Failure kUsage if the value has bits outside the mask, because one of the two must be
// wrong.
void CheckMask(const RegisterWrite& write);

// Writes the register. Reads it first if there is a mask, and reads it back if requested. Prints
// the line and adds address, before, value and verified to the result. Throws Failure kVerify if
// the register reads back differently.
void WriteMasked(const RegisterWrite& write, const std::function<std::uint32_t()>& read,
                 const std::function<void(std::uint32_t)>& write_value, Context& context);

}  // namespace borvanusb
