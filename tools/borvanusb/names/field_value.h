#pragma once

#include <cstdint>
#include <string>

#include "maps/register_map.h"
#include "names/register_names.h"

namespace borvanusb {

// Values of registers and fields: their bits, their names, what may be written.

// Whether reading the register, or a field of it, changes it.
bool ChangesWhenRead(const MapRegisterForm& form);

// The bits of a field, at their place in the register.
std::uint64_t BitsOf(const MapField& field);
// The highest value of a register or field.
std::uint64_t HighestValue(const NamedTarget& target);
// The part of a register's value that a target is.
std::uint64_t PartOf(const NamedTarget& target, std::uint64_t register_value);

// The name of a field's value; empty when it has none.
std::string MeaningOf(const MapField& field, std::uint64_t value);
// "0x1f" with the digits of the register, "5" of a field of up to ten values, else "0x05".
std::string ValueText(const NamedTarget& target, std::uint64_t value);

// The value that a text means: a number, or the name of an enumerated value of a field. Throws
// Failure kUsage with what is allowed: also for a value that the register or field does not take
// and for one that can't be written.
std::uint64_t WritableValue(const NamedTarget& target, const std::string& text);

// The value that a text means for a comparison; throws Failure kUsage for a text that means none.
std::uint64_t ComparableValue(const NamedTarget& target, const std::string& text);

// How a write of the other bits of a register must look, so that it leaves them as they are.
struct KeptBits {
  std::uint64_t as_read = 0;  // written back as they are read
  std::uint64_t ones = 0;     // written as 1, because a 0 changes them; the others as 0
};
KeptBits KeptBitsOf(const MapRegisterForm& form, std::uint64_t register_mask);

// The bits that read back as they were written.
std::uint64_t BitsThatReadBack(const MapRegisterForm& form, std::uint64_t register_mask);

}  // namespace borvanusb
