#pragma once

// Operands of script lines: one value of the camera, given as one word.

#include <cstdint>
#include <memory>
#include <string>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_words.h"

namespace borvanusb {

// Checks the text of an operand without a camera. It is "0x1a3" (a register of the chip, 8 bits),
// "wide:0x1a3" (32 bits), "i2c:SLAVE:ADDR" or "i2c:SLAVE:ADDR:MODE" (a register of a device on the
// I2C bus, default mode 16/8), or a name in the camera's profile. Returns the number of bits of its
// values, 64 for a name. Throws WrongValue.
int CheckOperand(const std::string& text);

// Whether an operand is a name in a profile.
bool IsNamedOperand(const std::string& text);

// An operand on a certain camera.
struct Operand {
  WordTarget at;
  std::string name;                            // for messages: "register 0x01a3"
  std::shared_ptr<const RegisterNames> names;  // null for a number
};

// Throws WrongValue as CheckOperand does, and Failure kUsage if the camera's profile does not have
// the name.
Operand ResolveOperand(const std::string& text, const CameraIdentity& camera, Context& context);

// The value as printed.
std::string ValueText(const Operand& operand, std::uint64_t value);
// Converts a text to a value: a number, or the name of a field's value. Throws Failure kUsage.
std::uint64_t ValueOf(const Operand& operand, const std::string& text);

// Throws the exceptions of Camera.
std::uint64_t ReadOperand(const Operand& operand, Camera& camera);

}  // namespace borvanusb
