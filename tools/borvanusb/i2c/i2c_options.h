#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/command_rules.h"
#include "command/values.h"
#include "i2c/bus_options.h"

namespace borvanusb {

// Parses a width mode: a name, or a number from 0 to 5. Throws WrongValue.
std::int32_t WidthModeValue(const std::string& text);

// Options for accessing a device on the I2C bus, for commands with a member `i2c`.

std::vector<std::string> WidthModeNames();

template <typename C>
void AddSlave(RuleOf<C>& rule, bool required) {
  const OptionDescription slave =
      Option("--slave", "N", "the device's address on the bus, 0 to 255, not shifted");
  rule.Add(required ? Required(slave) : slave, [](C& command, const std::string& text) {
    command.i2c.slave = static_cast<std::uint32_t>(NumberValue(text, 0, 255));
  });
}

template <typename C>
void AddMode(RuleOf<C>& rule) {
  rule.Add(Choices(Option("--mode", "BITS",
                          "bits of address and data: 8/8, 16/8 (default), 16/16, 32/8, 32/16, "
                          "32/32, or 0 to 5"),
                   WidthModeNames()),
           [](C& command, const std::string& text) { command.i2c.mode = WidthModeValue(text); });
}

template <typename C>
void AddOption(RuleOf<C>& rule) {
  rule.Add(Option("--option", "N", "passed to the chip unchanged, 0 to 255, default 0"),
           [](C& command, const std::string& text) {
             command.i2c.option = static_cast<std::uint32_t>(NumberValue(text, 0, 255));
           });
}

// Throws WrongUse if an address exceeds the width mode.
void CheckI2cAddress(const std::string& name, std::uint32_t address, const I2cOptions& i2c);

// The device given by --slave, --mode and --option. Throws Failure kUsage without --slave.
I2cTarget TargetOf(const I2cOptions& options);

// {"slave", "mode", "option"}; the mode is given by name.
nlohmann::ordered_json TargetJson(const I2cTarget& target);

}  // namespace borvanusb
