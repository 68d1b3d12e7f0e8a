#include "maps/map_text.h"

#include <algorithm>
#include <vector>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

using Line = std::function<void(std::string_view)>;

constexpr std::size_t kWidestName = 40;
constexpr int kAddressDigits = 8;
constexpr std::uint32_t kBitsPerDigit = 4;

std::string_view ShortAccess(MapAccess access) {
  switch (access) {
    case MapAccess::kReadWrite:
      return "rw";
    case MapAccess::kReadOnly:
      return "ro";
    case MapAccess::kWriteOnly:
      return "wo";
    case MapAccess::kWriteOnce:
      return "w1";
    case MapAccess::kReadWriteOnce:
      return "rw1";
  }
  return "";
}

std::string ResetText(const MapRegisterForm& form) {
  const int digits = static_cast<int>((form.bits + kBitsPerDigit - 1) / kBitsPerDigit);
  if (form.reset_mask == 0) {
    return std::string(static_cast<std::size_t>(digits) + 2, '-');
  }
  return Hex(form.reset_value, digits);
}

// The bits whose reset value is known; empty if all of them or none are.
std::string MaskText(const MapRegisterForm& form) {
  const std::uint64_t all =
      form.bits >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << form.bits) - 1;
  if (form.reset_mask == 0 || form.reset_mask == all) {
    return "";
  }
  return Format("known after reset: {}", Hex(form.reset_mask));
}

std::string ConstraintText(const MapWriteConstraint& constraint) {
  switch (constraint.kind) {
    case MapWriteConstraint::Kind::kNone:
      return "";
    case MapWriteConstraint::Kind::kWriteAsRead:
      return "write: as read";
    case MapWriteConstraint::Kind::kEnumeratedValues:
      return "write: the values below";
    case MapWriteConstraint::Kind::kRange:
      return Format("write: {} to {}", Hex(constraint.minimum), Hex(constraint.maximum));
  }
  return "";
}

void Append(std::string& line, std::string_view text) {
  if (!text.empty()) {
    line += "  ";
    line += text;
  }
}

// Appends side effects of reading and writing; nothing for a register or field (`Of`) that behaves
// like memory.
template <typename Of>
void AppendEffects(const Of& of, std::string& line) {
  if (of.read_action != MapReadAction::kNone && CanRead(of.access)) {
    Append(line, Format("read: {}", WordOf(of.read_action)));
  }
  if (of.modified_write != MapModifiedWrite::kModify && CanWrite(of.access)) {
    Append(line, WordOf(of.modified_write));
  }
  Append(line, ConstraintText(of.constraint));
}

std::string ValueText(const MapEnumeratedValue& value) {
  if (value.is_default) {
    return "default";
  }
  if (value.counting == ~std::uint64_t{0}) {
    return Hex(value.value);
  }
  std::string digits;
  // Starts at the highest bit that is not an insignificant zero.
  std::uint64_t relevant = value.value | ~value.counting;
  for (std::uint64_t bit = std::uint64_t{1} << 63U; bit != 0; bit >>= 1U) {
    if ((relevant & bit) != 0 || !digits.empty()) {
      const bool counts = (value.counting & bit) != 0;
      digits += !counts ? 'x' : ((value.value & bit) != 0 ? '1' : '0');
    }
  }
  return Format("0b{}", digits);
}

void PrintValues(const MapField& field, const Line& print) {
  for (const MapEnumeration* const enumeration : field.enumerations) {
    if (enumeration == nullptr) {
      continue;
    }
    const std::string usage = enumeration->usage == MapUsage::kReadWrite
                                  ? ""
                                  : Format("{}: ", WordOf(enumeration->usage));
    for (const MapEnumeratedValue& value : enumeration->values) {
      std::string line = Format("            {}{} = {}", usage, ValueText(value), value.name);
      Append(line, PlainText(value.description));
      print(line);
    }
  }
}

void PrintFields(const MapRegisterForm& form, const Line& print) {
  std::size_t width = 0;
  for (const MapField& field : form.fields) {
    width = std::max(width, std::min(field.name.size(), kWidestName));
  }
  for (const MapField& field : form.fields) {
    std::string line = Format("      {:<7} {:<{}}  {:<3}", BitsText(field), field.name, width,
                              ShortAccess(field.access));
    AppendEffects(field, line);
    Append(line, PlainText(field.description, field.index));
    while (line.ends_with(' ')) {
      line.pop_back();
    }
    print(line);
    PrintValues(field, print);
  }
}

void PrintRegister(const MapRegister& one, std::size_t width, const Line& print) {
  const MapRegisterForm& form = *one.form;
  std::string line = Format("  {}  {:<{}}  {:>2} bits  {:<3}  {}", Hex(one.address, kAddressDigits),
                            one.name, width, form.bits, ShortAccess(form.access), ResetText(form));
  Append(line, MaskText(form));
  AppendEffects(form, line);
  if (!one.index_name.empty()) {
    Append(line, Format("({} is {})", one.index, one.index_name));
  }
  if (form.protection != MapProtection::kNone) {
    Append(line, Format("protection: {}", WordOf(form.protection)));
  }
  Append(line, PlainText(form.description, one.index));
  print(line);
  PrintFields(form, print);
}

}  // namespace

std::string BitsText(const MapField& field) {
  return field.bit_width == 1
             ? Format("[{}]", field.bit_offset)
             : Format("[{}:{}]", field.bit_offset + field.bit_width - 1, field.bit_offset);
}

MapCounts CountsOf(const RegisterMap& map) {
  MapCounts counts;
  counts.peripherals = map.peripherals.size();
  counts.registers = map.registers.size();
  for (const MapRegister& one : map.registers) {
    counts.fields += one.form->fields.size();
    counts.values += one.form->entries - 1 - one.form->fields.size();
  }
  return counts;
}

void PrintMap(const RegisterMap& map, const Line& print) {
  for (const MapPeripheral& peripheral : map.peripherals) {
    std::string line = Format("{} at {}", peripheral.name, Hex(peripheral.base, kAddressDigits));
    Append(line, PlainText(peripheral.description, peripheral.index));
    print(line);
    std::size_t width = 0;
    for (const MapRegister& one : map.RegistersOf(peripheral)) {
      width = std::max(width, std::min(one.name.size(), kWidestName));
    }
    for (const MapRegister& one : map.RegistersOf(peripheral)) {
      PrintRegister(one, width, print);
    }
    print("");
  }
}

}  // namespace borvanusb
