#include "names/field_value.h"

#include <algorithm>
#include <optional>

#include "base/chip_register.h"
#include "base/failure.h"
#include "base/format.h"
#include "base/name_pattern.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kWidest = 64;
constexpr std::size_t kMostNames = 12;  // listed in a message

std::uint64_t LowBits(std::uint32_t bits) {
  constexpr std::uint64_t kAll = ~std::uint64_t{0};
  return bits >= kWidest ? kAll : ~(kAll << bits);
}

const MapEnumeration* EnumerationFor(const MapField& field, bool writing) {
  for (const MapEnumeration* const enumeration : field.enumerations) {
    if (enumeration != nullptr &&
        enumeration->usage != (writing ? MapUsage::kRead : MapUsage::kWrite)) {
      return enumeration;
    }
  }
  return nullptr;
}

bool Means(const MapEnumeratedValue& named, std::uint64_t value) {
  return !named.is_default && ((named.value ^ value) & named.counting) == 0;
}

std::optional<std::uint64_t> ValueOfName(const MapField& field, const std::string& text,
                                         bool writing) {
  const MapEnumeration* const enumeration = EnumerationFor(field, writing);
  if (enumeration == nullptr) {
    return std::nullopt;
  }
  for (const MapEnumeratedValue& named : enumeration->values) {
    if (!named.is_default && SameName(named.name, text)) {
      return named.value & named.counting;
    }
  }
  return std::nullopt;
}

std::string NamesOf(const MapField& field, bool writing) {
  const MapEnumeration* const enumeration = EnumerationFor(field, writing);
  std::string text;
  std::size_t names = 0;
  for (const MapEnumeratedValue& named :
       enumeration != nullptr ? enumeration->values : std::span<const MapEnumeratedValue>()) {
    if (named.is_default) {
      continue;
    }
    if (names++ == kMostNames) {
      return Format("{}, …", text);
    }
    text += Format("{}{} ({})", text.empty() ? "" : ", ", named.name, named.value & named.counting);
  }
  return text;
}

const MapWriteConstraint& ConstraintOf(const NamedTarget& target) {
  return target.field != nullptr ? target.field->constraint : target.of->in_map->form->constraint;
}

// The allowed values, to follow "allowed are ".
std::string AllowedText(const NamedTarget& target, bool writing) {
  const MapWriteConstraint& constraint = ConstraintOf(target);
  const std::string names = target.field != nullptr ? NamesOf(*target.field, writing) : "";
  const bool only_names =
      writing && constraint.kind == MapWriteConstraint::Kind::kEnumeratedValues && !names.empty();
  const bool range = writing && constraint.kind == MapWriteConstraint::Kind::kRange;
  const std::string numbers =
      Format("{} to {}", range ? constraint.minimum : 0,
             ValueText(target, range ? constraint.maximum : HighestValue(target)));
  return only_names ? names : names.empty() ? numbers : Format("{}; {}", numbers, names);
}

[[noreturn]] void Refuse(const NamedTarget& target, const std::string& text, const std::string& why,
                         bool writing) {
  throw Failure(ExitCode::kUsage, Format("{}: {} {}", NameOf(target), text, why),
                Format("Allowed are {}.", AllowedText(target, writing)));
}

void CheckConstraint(const NamedTarget& target, const std::string& text, std::uint64_t value) {
  const MapWriteConstraint& constraint = ConstraintOf(target);
  switch (constraint.kind) {
    case MapWriteConstraint::Kind::kRange:
      if (value < constraint.minimum || value > constraint.maximum) {
        Refuse(target, text, "is outside the allowed range", true);
      }
      break;
    case MapWriteConstraint::Kind::kEnumeratedValues: {
      const MapEnumeration* const enumeration =
          target.field != nullptr ? EnumerationFor(*target.field, true) : nullptr;
      if (enumeration != nullptr &&
          std::ranges::none_of(enumeration->values,
                               [&](const auto& named) { return Means(named, value); })) {
        Refuse(target, text, "is not an allowed value", true);
      }
      break;
    }
    case MapWriteConstraint::Kind::kWriteAsRead:
      throw Failure(ExitCode::kUsage,
                    Format("{}: may only be written as it is read", NameOf(target)),
                    "Write the register's other fields; this one is kept.");
    case MapWriteConstraint::Kind::kNone:
      break;
  }
}

std::uint64_t NumberOf(const NamedTarget& target, const std::string& text, bool writing) {
  std::optional<std::uint64_t> value = ParseNumber(text);
  if (!value && target.field != nullptr) {
    value = ValueOfName(*target.field, text, writing);
  }
  if (!value) {
    Refuse(target, text.empty() ? "an empty text" : text, "is not a valid value", writing);
  }
  if (*value > HighestValue(target)) {
    Refuse(target, text,
           Format("is too big for {} bits",
                  target.field != nullptr ? target.field->bit_width : target.of->Bits()),
           writing);
  }
  return *value;
}

MapModifiedWrite ModifiedWriteOf(const MapRegisterForm& form, const MapField& field) {
  return field.modified_write != MapModifiedWrite::kModify ? field.modified_write
                                                           : form.modified_write;
}

bool ZeroChanges(MapModifiedWrite write) {
  return write == MapModifiedWrite::kZeroToClear || write == MapModifiedWrite::kZeroToSet ||
         write == MapModifiedWrite::kZeroToToggle;
}

}  // namespace

bool ChangesWhenRead(const MapRegisterForm& form) {
  return form.read_action != MapReadAction::kNone ||
         std::ranges::any_of(form.fields, [](const MapField& field) {
           return field.read_action != MapReadAction::kNone;
         });
}

std::uint64_t BitsOf(const MapField& field) {
  return field.bit_offset >= kWidest ? 0 : LowBits(field.bit_width) << field.bit_offset;
}

std::uint64_t HighestValue(const NamedTarget& target) {
  return target.field != nullptr ? LowBits(target.field->bit_width) : target.of->Mask();
}

std::uint64_t PartOf(const NamedTarget& target, std::uint64_t register_value) {
  return target.field != nullptr
             ? (register_value & BitsOf(*target.field)) >> (target.field->bit_offset % kWidest)
             : register_value;
}

std::string MeaningOf(const MapField& field, std::uint64_t value) {
  const MapEnumeration* const enumeration = EnumerationFor(field, false);
  if (enumeration == nullptr) {
    return {};
  }
  std::string otherwise;
  for (const MapEnumeratedValue& named : enumeration->values) {
    if (Means(named, value)) {
      return std::string(named.name);
    }
    otherwise = named.is_default ? std::string(named.name) : otherwise;
  }
  return otherwise;
}

std::string ValueText(const NamedTarget& target, std::uint64_t value) {
  const std::uint32_t bits = target.field != nullptr ? target.field->bit_width : target.of->Bits();
  if (target.field != nullptr && bits <= kBitsOfDigit) {
    return Format("{}", value);
  }
  return Hex(value, static_cast<int>((bits + kBitsOfDigit - 1) / kBitsOfDigit));
}

std::uint64_t WritableValue(const NamedTarget& target, const std::string& text) {
  const MapAccess access =
      target.field != nullptr ? target.field->access : target.of->in_map->form->access;
  if (!CanWrite(access) || !CanWrite(target.of->in_map->form->access)) {
    throw Failure(ExitCode::kUsage, Format("{}: is read-only", NameOf(target)),
                  Format("borvanusb reg show {} shows what can be written.", target.of->name));
  }
  const std::uint64_t value = NumberOf(target, text, true);
  CheckConstraint(target, text, value);
  return value;
}

std::uint64_t ComparableValue(const NamedTarget& target, const std::string& text) {
  return NumberOf(target, text, false);
}

KeptBits KeptBitsOf(const MapRegisterForm& form, std::uint64_t register_mask) {
  KeptBits kept;
  if (form.modified_write == MapModifiedWrite::kModify) {
    kept.as_read = register_mask;
  } else if (ZeroChanges(form.modified_write)) {
    kept.ones = register_mask;
  }
  for (const MapField& field : form.fields) {
    const std::uint64_t bits = BitsOf(field) & register_mask;
    const MapModifiedWrite write = ModifiedWriteOf(form, field);
    if (write == MapModifiedWrite::kModify) {
      continue;
    }
    kept.as_read &= ~bits;
    kept.ones = ZeroChanges(write) ? kept.ones | bits : kept.ones & ~bits;
  }
  return kept;
}

std::uint64_t BitsThatReadBack(const MapRegisterForm& form, std::uint64_t register_mask) {
  if (form.modified_write != MapModifiedWrite::kModify || !CanRead(form.access)) {
    return 0;
  }
  if (form.fields.empty()) {
    return register_mask;
  }
  std::uint64_t bits = 0;
  for (const MapField& field : form.fields) {
    if (field.access == MapAccess::kReadWrite &&
        field.modified_write == MapModifiedWrite::kModify) {
      bits |= BitsOf(field);
    }
  }
  return bits & register_mask;
}

}  // namespace borvanusb
