#pragma once

// What a line of a script compares: one value of the camera, named in one word.

#include <cstdint>
#include <memory>
#include <string>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_words.h"

namespace borvanusb {

// Checks the text of an operand without a camera: "0x1a3" (a register of the chip, 8 bits),
// "wide:0x1a3" (32 bits), "i2c:SLAVE:ADDR" or "i2c:SLAVE:ADDR:MODE" (a register of a device on the
// I2C bus, 16/8 without a mode), or a name of the camera's profile. Returns the bits of its values,
// 64 for a name. Throws WrongValue.
int CheckOperand(const std::string& text);

// Whether a text is a name of a profile.
bool IsNamedOperand(const std::string& text);

// What a text names, on a certain camera.
struct Operand {
  WordTarget at;
  std::string name;                            // for messages: "register 0x01a3"
  std::shared_ptr<const RegisterNames> names;  // null for a number
};

// Throws WrongValue as above, and Failure kUsage for a name that the camera's profile does not
// have.
Operand ResolveOperand(const std::string& text, const CameraIdentity& camera, Context& context);

// The value as lines show it.
std::string ValueText(const Operand& operand, std::uint64_t value);
// The value that a text means for the operand: a number or, for a field, the name of a value.
// Throws Failure kUsage.
std::uint64_t ValueOf(const Operand& operand, const std::string& text);

// Throws Failure as Camera does.
std::uint64_t ReadOperand(const Operand& operand, Camera& camera);

}  // namespace borvanusb
