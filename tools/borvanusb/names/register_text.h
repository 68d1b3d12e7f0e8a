#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <vector>

#include "names/register_access.h"
#include "names/register_names.h"
#include "names/register_words.h"
#include "output/output.h"

namespace borvanusb {

// Prints named registers as lines and as JSON.

// The device of a register: {"kind": "chip", "wide"} or {"kind": "i2c", "slave", "mode", "option"}.
nlohmann::ordered_json DeviceJson(const RegisterAccess& access);
// {"address", "value"}. A register with a name also has "name", "hex", "device" and "fields"; if a
// field was requested by name, only that field. "hex" exists because some languages can't represent
// numbers of more than 53 bits exactly.
nlohmann::ordered_json ValueJson(const WordTarget& target, std::uint64_t value);

// The address as printed: "0x3500", or "0x6c:0x3500" for a device on the I2C bus.
std::string AddressText(const RegisterAccess& access);

// Prints one line for each register in columns, and the fields of named registers below.
void PrintValues(std::span<const WordTarget> targets, std::span<const std::uint64_t> values,
                 bool with_fields, Output& output);

// Everything that the map says about a register.
nlohmann::ordered_json DescriptionJson(const NamedRegister& named);
}  // namespace borvanusb
