#include "station/operand.h"

#include <string_view>
#include <vector>

#include "base/chip_register.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/width_modes.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "names/field_value.h"

namespace borvanusb {

namespace {

constexpr std::string_view kWidePrefix = "wide:";
constexpr std::string_view kI2cPrefix = "i2c:";
constexpr int kWidestName = 64;

std::uint32_t Address(std::string_view text) {
  const auto number = ParseNumber(text);
  if (!number || *number > kHighestNumber) {
    throw WrongValue(
        "is not a valid register: a name of the profile, an address such as 0x1a3, wide:0x1a3, or "
        "i2c:SLAVE:ADDR such as i2c:0x6c:0x300a, where :8/8 or another width mode may follow");
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

RegisterAccess I2cOperand(std::string_view text) {
  const std::vector<std::string> parts = Parts(text);
  const auto slave = ParseNumber(parts.front());
  const bool has_mode = parts.size() == 3;
  if ((parts.size() != 2 && !has_mode) || !slave || *slave > kHighestSlave) {
    throw WrongValue(
        "is not a valid register on the I2C bus: i2c:SLAVE:ADDR or i2c:SLAVE:ADDR:MODE, with SLAVE "
        "from 0 to 255, such as i2c:0x6c:0x300a:16/8");
  }
  I2cTarget target{static_cast<std::uint32_t>(*slave), 1, 0};
  if (has_mode) {
    target.mode = WidthModeValue(parts[2]);
  }
  const std::uint32_t address = Address(parts[1]);
  const WidthMode& mode = WidthModeOf(target.mode);
  if (address > mode.highest_address) {
    throw WrongValue(Format("is not allowed: addresses of width mode {} go up to {}", mode.name,
                            Hex(mode.highest_address)));
  }
  return I2cAccess(target, address);
}

RegisterAccess Parse(std::string_view text) {
  if (text.starts_with(kI2cPrefix)) {
    return I2cOperand(text.substr(kI2cPrefix.size()));
  }
  const bool wide = text.starts_with(kWidePrefix);
  return ChipAccess(Address(wide ? text.substr(kWidePrefix.size()) : text), wide);
}

std::string NameOf(const RegisterAccess& access) {
  return access.on_i2c ? Format("slave {}, register {}", Hex(access.target.slave, 2),
                                Hex(access.address, WidthModeOf(access.target.mode).address_digits))
                       : Format("register {}", Hex(access.address, kAddressDigits));
}

}  // namespace

bool IsNamedOperand(const std::string& text) {
  return MayBeName(text) && text.find(':') == std::string::npos;
}

int CheckOperand(const std::string& text) {
  return IsNamedOperand(text) ? kWidestName : static_cast<int>(Parse(text).access_bits);
}

Operand ResolveOperand(const std::string& text, const CameraIdentity& camera, Context& context) {
  if (!IsNamedOperand(text)) {
    const RegisterAccess access = Parse(text);
    return {{access, {}}, NameOf(access), nullptr};
  }
  Operand operand;
  operand.names = NamesNeededFor(text, camera, context);
  const NamedTarget target = operand.names->Find(text);
  operand.at = {AccessOf(*target.of), target};
  operand.name = NameOf(target);
  return operand;
}

std::string ValueText(const Operand& operand, std::uint64_t value) {
  const NamedTarget& target = operand.at.target;
  if (target.of == nullptr) {
    return Hex(value, static_cast<int>(operand.at.access.access_bits / kBitsOfDigit));
  }
  const std::string meaning = target.field != nullptr ? MeaningOf(*target.field, value) : "";
  return Format("{}{}", ValueText(target, value), meaning.empty() ? "" : Format(" ({})", meaning));
}

std::uint64_t ValueOf(const Operand& operand, const std::string& text) {
  if (operand.at.target.of != nullptr) {
    return ComparableValue(operand.at.target, text);
  }
  // The text was checked when the line was parsed.
  return ParseNumber(text).value_or(0);
}

std::uint64_t ReadOperand(const Operand& operand, Camera& camera) {
  const std::uint64_t value = ReadOne(operand.at.access, camera);
  return operand.at.target.of != nullptr ? PartOf(operand.at.target, value) : value;
}

}  // namespace borvanusb
