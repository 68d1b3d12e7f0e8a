#include <nlohmann/json.hpp>

#include "maps/map_text.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

void AddEffects(MapReadAction action, MapModifiedWrite write, const MapWriteConstraint& constraint,
                Json& json) {
  json["read_action"] = action == MapReadAction::kNone ? Json() : Json(WordOf(action));
  json["modified_write_values"] = WordOf(write);
  Json allowed;
  switch (constraint.kind) {
    case MapWriteConstraint::Kind::kNone:
      break;
    case MapWriteConstraint::Kind::kWriteAsRead:
      allowed = {{"kind", "write-as-read"}};
      break;
    case MapWriteConstraint::Kind::kEnumeratedValues:
      allowed = {{"kind", "enumerated-values"}};
      break;
    case MapWriteConstraint::Kind::kRange:
      allowed = {
          {"kind", "range"}, {"minimum", constraint.minimum}, {"maximum", constraint.maximum}};
      break;
  }
  json["write_constraint"] = std::move(allowed);
}

Json EnumerationJson(const MapEnumeration& enumeration) {
  auto values = Json::array();
  for (const MapEnumeratedValue& value : enumeration.values) {
    values.push_back({{"name", value.name},
                      {"value", value.is_default ? Json() : Json(value.value)},
                      {"any_bits", value.is_default ? 0 : ~value.counting},
                      {"default", value.is_default},
                      {"description", PlainText(value.description)}});
  }
  return {{"name", enumeration.name},
          {"usage", WordOf(enumeration.usage)},
          {"values", std::move(values)}};
}

Json FieldJson(const MapField& field) {
  Json json = {{"name", field.name},
               {"bit_offset", field.bit_offset},
               {"bit_width", field.bit_width},
               {"access", WordOf(field.access)}};
  AddEffects(field.read_action, field.modified_write, field.constraint, json);
  json["description"] = PlainText(field.description, field.index);
  auto enumerations = Json::array();
  for (const MapEnumeration* const enumeration : field.enumerations) {
    if (enumeration != nullptr) {
      enumerations.push_back(EnumerationJson(*enumeration));
    }
  }
  json["enumerations"] = std::move(enumerations);
  return json;
}

Json RegisterJson(const MapRegister& one) {
  const MapRegisterForm& form = *one.form;
  Json json = {{"name", one.name},
               {"address", one.address},
               {"bits", form.bits},
               {"access", WordOf(form.access)},
               {"protection",
                form.protection == MapProtection::kNone ? Json() : Json(WordOf(form.protection))},
               {"reset_value", form.reset_value},
               {"reset_mask", form.reset_mask}};
  AddEffects(form.read_action, form.modified_write, form.constraint, json);
  json["description"] = PlainText(form.description, one.index);
  json["index_name"] = one.index_name;
  auto fields = Json::array();
  for (const MapField& field : form.fields) {
    fields.push_back(FieldJson(field));
  }
  json["fields"] = std::move(fields);
  return json;
}

}  // namespace

Json MapJson(const RegisterMap& map) {
  auto peripherals = Json::array();
  for (const MapPeripheral& peripheral : map.peripherals) {
    auto registers = Json::array();
    for (const MapRegister& one : map.RegistersOf(peripheral)) {
      registers.push_back(RegisterJson(one));
    }
    peripherals.push_back({{"name", peripheral.name},
                           {"base", peripheral.base},
                           {"group", peripheral.group},
                           {"description", PlainText(peripheral.description, peripheral.index)},
                           {"registers", std::move(registers)}});
  }
  return peripherals;
}

}  // namespace borvanusb
