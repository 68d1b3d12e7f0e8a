#pragma once

// What a line of a script compares: one value of the camera, named in one word.

#include <cstdint>
#include <string>

#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

struct OperandValue {
  std::uint32_t value = 0;
  int digits = 2;    // hexadecimal digits of a value of this width
  std::string name;  // for messages: "register 0x01a3"
};

// Checks the text of an operand without a camera: "0x1a3" (a register of the chip, 8 bits),
// "wide:0x1a3" (32 bits), "i2c:SLAVE:ADDR" or "i2c:SLAVE:ADDR:MODE" (a register of a device on the
// I2C bus, 16/8 without a mode). Returns the bits of its values. Throws WrongValue.
int CheckOperand(const std::string& text);

// Reads what the text names. Throws WrongValue as above, and Failure as Camera does.
OperandValue ReadOperand(const std::string& text, Camera& camera, Context& context);

}  // namespace borvanusb
