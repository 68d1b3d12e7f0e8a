#include "i2c/i2c_options.h"

#include <borvan_usb.h>

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"

namespace borvanusb {

static_assert(kBorvanI2cAddress8Data8 == 0 && kBorvanI2cAddress16Data8 == 1 &&
              kBorvanI2cAddress16Data16 == 2 && kBorvanI2cAddress32Data8 == 3 &&
              kBorvanI2cAddress32Data16 == 4 && kBorvanI2cAddress32Data32 == 5);

std::int32_t WidthModeValue(const std::string& text) {
  for (std::size_t mode = 0; mode < kWidthModes.size(); ++mode) {
    if (text == kWidthModes[mode].name || ParseNumber(text) == mode) {
      return static_cast<std::int32_t>(mode);
    }
  }
  throw WrongValue(
      "is not a valid width mode: bits of address and data, 8/8, 16/8, 16/16, 32/8, 32/16 or "
      "32/32, or 0 to 5");
}

void CheckI2cAddress(const std::string& name, std::uint32_t address, const I2cOptions& i2c) {
  const WidthMode& mode = WidthModeOf(i2c.mode);
  CheckFits(name, address, mode.address_bits, Format("the addresses of width mode {}", mode.name));
}

std::vector<std::string> WidthModeNames() {
  std::vector<std::string> names;
  names.reserve(kWidthModes.size());
  for (const WidthMode& mode : kWidthModes) {
    names.emplace_back(mode.name);
  }
  return names;
}

I2cTarget TargetOf(const I2cOptions& options) {
  if (!options.slave) {
    throw Failure(ExitCode::kUsage, "--slave: the device on the I2C bus is not given",
                  "Give its address, 0 to 255; borvanusb i2c scan finds the devices.");
  }
  return {*options.slave, options.mode, options.option};
}

nlohmann::ordered_json TargetJson(const I2cTarget& target) {
  return {
      {"slave", target.slave}, {"mode", WidthModeOf(target.mode).name}, {"option", target.option}};
}

}  // namespace borvanusb
