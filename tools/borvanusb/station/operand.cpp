#include "station/operand.h"

#include <optional>
#include <string_view>
#include <vector>

#include "base/format.h"
#include "base/numbers.h"
#include "base/width_modes.h"
#include "camera/i2c_failure.h"
#include "command/values.h"
#include "i2c/i2c_options.h"

namespace borvanusb {

namespace {

constexpr std::string_view kWidePrefix = "wide:";
constexpr std::string_view kI2cPrefix = "i2c:";
constexpr std::uint64_t kHighestSlave = 0xFF;
constexpr int kByteDigits = 2;
constexpr int kWideDigits = 8;
constexpr int kAddressDigits = 4;
constexpr int kBitsPerDigit = 4;

// A value of the camera, read from its text.
struct Operand {
  std::uint32_t address = 0;
  bool wide = false;
  std::optional<I2cTarget> i2c;  // nothing for a register of the chip
};

std::uint32_t Address(std::string_view text) {
  const auto number = ParseNumber(text);
  if (!number || *number > kHighestNumber) {
    throw WrongValue(
        "is no register: an address such as 0x1a3, wide:0x1a3, or i2c:SLAVE:ADDR such as "
        "i2c:0x6c:0x300a, where :8/8 or another width mode may follow");
  }
  return static_cast<std::uint32_t>(*number);
}

std::vector<std::string> Parts(std::string_view text) {
  std::vector<std::string> parts;
  while (true) {
    const std::size_t colon = text.find(':');
    parts.emplace_back(text.substr(0, colon));
    if (colon == std::string_view::npos) {
      return parts;
    }
    text.remove_prefix(colon + 1);
  }
}

Operand I2cOperand(std::string_view text) {
  const std::vector<std::string> parts = Parts(text);
  const auto slave = ParseNumber(parts.front());
  const bool has_mode = parts.size() == 3;
  if ((parts.size() != 2 && !has_mode) || !slave || *slave > kHighestSlave) {
    throw WrongValue(
        "is no register on the I2C bus: i2c:SLAVE:ADDR or i2c:SLAVE:ADDR:MODE, with SLAVE from 0 "
        "to 255, such as i2c:0x6c:0x300a:16/8");
  }
  Operand operand{Address(parts[1]), false, I2cTarget{static_cast<std::uint32_t>(*slave), 1, 0}};
  if (has_mode) {
    operand.i2c->mode = WidthModeValue(parts[2]);
  }
  const WidthMode& mode = WidthModeOf(operand.i2c->mode);
  if (operand.address > mode.highest_address) {
    throw WrongValue(Format("is not allowed: addresses of width mode {} go up to {}", mode.name,
                            Hex(mode.highest_address)));
  }
  return operand;
}

Operand Parse(std::string_view text) {
  if (text.starts_with(kI2cPrefix)) {
    return I2cOperand(text.substr(kI2cPrefix.size()));
  }
  const bool wide = text.starts_with(kWidePrefix);
  return {Address(wide ? text.substr(kWidePrefix.size()) : text), wide, std::nullopt};
}

int DigitsOf(const Operand& operand) {
  if (operand.i2c) {
    return WidthModeOf(operand.i2c->mode).value_digits;
  }
  return operand.wide ? kWideDigits : kByteDigits;
}

}  // namespace

int CheckOperand(const std::string& text) {
  return DigitsOf(Parse(text)) * kBitsPerDigit;
}

OperandValue ReadOperand(const std::string& text, Camera& camera, Context& /*context*/) {
  const Operand operand = Parse(text);
  const int digits = DigitsOf(operand);
  if (operand.i2c) {
    const std::uint32_t value = ExplainingI2c(
        camera, *operand.i2c, [&] { return camera.ReadI2c(*operand.i2c, operand.address); });
    return {value, digits,
            Format("slave {}, register {}", Hex(operand.i2c->slave, 2),
                   Hex(operand.address, WidthModeOf(operand.i2c->mode).address_digits))};
  }
  return {camera.ReadRegister(operand.address,
                              operand.wide ? RegisterWidth::kWide : RegisterWidth::kByte),
          digits, Format("register {}", Hex(operand.address, kAddressDigits))};
}

}  // namespace borvanusb
