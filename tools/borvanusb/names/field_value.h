#pragma once

#include <cstdint>
#include <string>

#include "maps/register_map.h"
#include "names/register_names.h"

namespace borvanusb {

// Values of registers and fields: bits, names of values, allowed values.

// Whether reading the register, or one of its fields, has side effects.
bool ChangesWhenRead(const MapRegisterForm& form);

// The bits of a field, at their position in the register.
std::uint64_t BitsOf(const MapField& field);
// The highest value of a register or field.
std::uint64_t HighestValue(const NamedTarget& target);
// Extracts the value of the target, a register or field, from a register value.
std::uint64_t PartOf(const NamedTarget& target, std::uint64_t register_value);

// The name of a field's value. Empty if it has none.
std::string MeaningOf(const MapField& field, std::uint64_t value);
// "0x1f" with all digits of the register. A field with up to ten possible values is shown as "5",
// any other as "0x05".
std::string ValueText(const NamedTarget& target, std::uint64_t value);

// Converts a text to a value: a number, or the name of an enumerated value. Throws Failure kUsage,
// with the allowed values, if the text is invalid, the register or field does not accept the value,
// or it can't be written.
std::uint64_t WritableValue(const NamedTarget& target, const std::string& text);

// Converts a text to a value for a comparison. Throws Failure kUsage if the text is invalid.
std::uint64_t ComparableValue(const NamedTarget& target, const std::string& text);

// How to write a register without changing its other bits.
struct KeptBits {
  std::uint64_t as_read = 0;  // read first and written back unchanged
  std::uint64_t ones = 0;     // written as 1, because 0 has an effect; others are written as 0
};
KeptBits KeptBitsOf(const MapRegisterForm& form, std::uint64_t register_mask);

// The bits that read back as they were written.
std::uint64_t BitsThatReadBack(const MapRegisterForm& form, std::uint64_t register_mask);

}  // namespace borvanusb
