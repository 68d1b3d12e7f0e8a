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

// Registers with names as lines and as JSON.

// The device of a register: {"kind": "chip", "wide"} or {"kind": "i2c", "slave", "mode", "option"}.
nlohmann::ordered_json DeviceJson(const RegisterAccess& access);
// {"address", "value"} and, for a register with a name, "name", "hex", "device" and "fields"; for a
// field that was asked for by its name, that field alone. "hex" is there because a number of more
// than 53 bits is not exact in every language.
nlohmann::ordered_json ValueJson(const WordTarget& target, std::uint64_t value);

// The address as lines show it: "0x3500", of a device on the bus "0x6c:0x3500".
std::string AddressText(const RegisterAccess& access);

// One line for each register, the fields of named ones below, in columns.
void PrintValues(std::span<const WordTarget> targets, std::span<const std::uint64_t> values,
                 bool with_fields, Output& output);

// All that the map says of a register.
nlohmann::ordered_json DescriptionJson(const NamedRegister& named);
}  // namespace borvanusb
