#include "names/register_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/numbers.h"
#include "base/width_modes.h"
#include "maps/map_text.h"
#include "names/field_value.h"
#include "output/columns.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kChipAddressDigits = 4;

std::string NameOfWord(const WordTarget& target) {
  return target.target.of != nullptr ? NameOf(target.target) : std::string();
}

std::string WordValueText(const WordTarget& target, std::uint64_t value) {
  return target.target.of != nullptr ? ValueText(target.target, PartOf(target.target, value))
                                     : Hex(value, ValueDigits(target.access));
}

Json FieldValueJson(const NamedTarget& field, std::uint64_t register_value) {
  const std::uint64_t value = PartOf(field, register_value);
  const std::string meaning = MeaningOf(*field.field, value);
  return {{"name", field.field->name},
          {"value", value},
          {"meaning", meaning.empty() ? Json() : Json(meaning)}};
}

Json ConstraintJson(const MapWriteConstraint& constraint) {
  switch (constraint.kind) {
    case MapWriteConstraint::Kind::kNone:
      break;
    case MapWriteConstraint::Kind::kWriteAsRead:
      return {{"kind", "write-as-read"}};
    case MapWriteConstraint::Kind::kEnumeratedValues:
      return {{"kind", "enumerated"}};
    case MapWriteConstraint::Kind::kRange:
      return {{"kind", "range"}, {"minimum", constraint.minimum}, {"maximum", constraint.maximum}};
  }
  return {};
}

template <typename Part>
void AddEffects(const Part& part, Json& json) {
  json["read_action"] =
      part.read_action == MapReadAction::kNone ? Json() : Json(WordOf(part.read_action));
  json["modified_write"] =
      part.modified_write == MapModifiedWrite::kModify ? Json() : Json(WordOf(part.modified_write));
  json["constraint"] = ConstraintJson(part.constraint);
}

Json FieldDescriptionJson(const MapField& field) {
  Json json = {{"name", field.name},
               {"offset", field.bit_offset},
               {"bits", field.bit_width},
               {"access", WordOf(field.access)},
               {"description", PlainText(field.description, field.index)}};
  AddEffects(field, json);
  auto values = Json::array();
  for (const MapEnumeration* const enumeration : field.enumerations) {
    for (const MapEnumeratedValue& value :
         enumeration != nullptr ? enumeration->values : std::span<const MapEnumeratedValue>()) {
      if (!value.is_default) {
        values.push_back({{"name", value.name},
                          {"value", value.value & value.counting},
                          {"description", PlainText(value.description)}});
      }
    }
  }
  json["values"] = std::move(values);
  return json;
}

std::string PeripheralOf(const NamedRegister& named) {
  return named.name.substr(0, named.name.rfind('.'));
}

}  // namespace

Json DeviceJson(const RegisterAccess& access) {
  if (!access.on_i2c) {
    return {{"kind", "chip"}, {"wide", access.width == RegisterWidth::kWide}};
  }
  return {{"kind", "i2c"},
          {"slave", access.target.slave},
          {"mode", WidthModeOf(access.target.mode).name},
          {"option", access.target.option}};
}

Json ValueJson(const WordTarget& target, std::uint64_t value) {
  Json json = {{"address", target.access.address}, {"value", value}};
  if (target.target.of == nullptr) {
    if (target.access.on_i2c) {
      json["device"] = DeviceJson(target.access);
    }
    return json;
  }
  json["name"] = target.target.of->name;
  json["hex"] = Hex(value, ValueDigits(target.access));
  json["device"] = DeviceJson(target.access);
  auto fields = Json::array();
  if (target.target.field != nullptr) {
    fields.push_back(FieldValueJson(target.target, value));
  } else {
    for (const MapField& field : target.target.of->in_map->form->fields) {
      fields.push_back(FieldValueJson({target.target.of, &field}, value));
    }
  }
  json["fields"] = std::move(fields);
  return json;
}

std::string AddressText(const RegisterAccess& access) {
  if (!access.on_i2c) {
    return Hex(access.address, kChipAddressDigits);
  }
  return Format("{}:{}", Hex(access.target.slave, 2),
                Hex(access.address, WidthModeOf(access.target.mode).address_digits));
}

void PrintValues(std::span<const WordTarget> targets, std::span<const std::uint64_t> values,
                 bool with_fields, Output& output) {
  std::size_t name_columns = 0;
  std::size_t address_columns = 0;
  for (const WordTarget& target : targets) {
    name_columns = std::max(name_columns, ColumnsOf(NameOfWord(target)));
    address_columns = std::max(address_columns, AddressText(target.access).size());
  }
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const WordTarget& target = targets[i];
    const NamedTarget& named = target.target;
    std::string line = Format("{}  {}  {}", Padded(NameOfWord(target), name_columns),
                              Padded(AddressText(target.access), address_columns),
                              WordValueText(target, values[i]));
    if (named.field != nullptr) {
      const std::string meaning = MeaningOf(*named.field, PartOf(named, values[i]));
      line += meaning.empty() ? "" : Format("  {}", meaning);
    }
    output.Line(line);
    if (!with_fields || named.of == nullptr || named.field != nullptr) {
      continue;
    }
    for (const MapField& field : named.of->in_map->form->fields) {
      const NamedTarget part{named.of, &field};
      const std::string meaning = MeaningOf(field, PartOf(part, values[i]));
      output.Line(Format("  {} {}  {}{}", field.name, BitsText(field),
                         ValueText(part, PartOf(part, values[i])),
                         meaning.empty() ? "" : Format("  {}", meaning)));
    }
  }
}

Json DescriptionJson(const NamedRegister& named) {
  const MapRegisterForm& form = *named.in_map->form;
  Json json = {{"name", named.name},
               {"peripheral", PeripheralOf(named)},
               {"map", named.map->file.substr(named.map->file.find_last_of("/\\") + 1)},
               {"device", DeviceJson(AccessOf(named))},
               {"address", named.address},
               {"bits", form.bits},
               {"access", WordOf(form.access)},
               {"reset", form.reset_mask == 0
                             ? Json()
                             : Json{{"value", form.reset_value}, {"mask", form.reset_mask}}},
               {"description", PlainText(form.description, named.in_map->index)}};
  AddEffects(form, json);
  auto fields = Json::array();
  for (const MapField& field : form.fields) {
    fields.push_back(FieldDescriptionJson(field));
  }
  json["fields"] = std::move(fields);
  return json;
}

}  // namespace borvanusb
