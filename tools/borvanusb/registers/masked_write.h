#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "command/context.h"

namespace borvanusb {

// A register that is written, of the chip or of a device on the I2C bus.
struct RegisterWrite {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::optional<std::uint32_t> mask;  // only these bits change
  bool verify = false;
  std::string name;  // for failures: "register 0x01a3"
  int address_digits = 0;
  int value_digits = 0;
};

// Throws Failure kUsage when the value has bits that the mask leaves alone: one of the two is not
// what was meant.
void CheckMask(const RegisterWrite& write);

// Writes the register: reads it first when only some of its bits are to change, reads it back when
// asked to. Prints the line and adds address, before, value and verified to the result. Throws
// Failure kVerify when the register reads back as something else.
void WriteMasked(const RegisterWrite& write, const std::function<std::uint32_t()>& read,
                 const std::function<void(std::uint32_t)>& write_value, Context& context);

}  // namespace borvanusb
