#include "support/json_schema.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

namespace borvanusb::tool_test {
namespace {

using Json = nlohmann::ordered_json;

const std::set<std::string> kKnown = {
    "$schema", "$id",  "title",   "description", "type",    "properties",          "required",
    "items",   "enum", "minimum", "maximum",     "pattern", "additionalProperties"};

bool IsOfType(const Json& value, const std::string& type) {
  return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
         (type == "string" && value.is_string()) || (type == "boolean" && value.is_boolean()) ||
         (type == "null" && value.is_null()) || (type == "integer" && value.is_number_integer()) ||
         (type == "number" && value.is_number());
}

bool HasType(const Json& value, const Json& types) {
  if (types.is_string()) {
    return IsOfType(value, types);
  }
  return std::any_of(types.begin(), types.end(),
                     [&](const Json& type) { return IsOfType(value, type); });
}

std::string Breach(const Json& schema, const Json& value, const std::string& place);

std::string BreachOfObject(const Json& schema, const Json& value, const std::string& place) {
  for (const auto& required : schema.value("required", Json::array())) {
    if (!value.contains(required)) {
      return place + ": lacks " + required.get<std::string>();
    }
  }
  const Json properties = schema.value("properties", Json::object());
  if (schema.value("additionalProperties", Json(false)) == true) {
    return "";
  }
  for (const auto& [name, member] : value.items()) {
    const Json others = schema.value("additionalProperties", Json(false));
    if (!properties.contains(name) && !others.is_object()) {
      return place + ": must not have " + name;
    }
    const std::string breach =
        Breach(properties.contains(name) ? properties[name] : others, member, place + "/" + name);
    if (!breach.empty()) {
      return breach;
    }
  }
  return "";
}

std::string BreachOfScalar(const Json& schema, const Json& value, const std::string& place) {
  if (schema.contains("enum") &&
      std::find(schema["enum"].begin(), schema["enum"].end(), value) == schema["enum"].end()) {
    return place + ": not among the values allowed";
  }
  if (value.is_number() && ((schema.contains("minimum") && value < schema["minimum"]) ||
                            (schema.contains("maximum") && value > schema["maximum"]))) {
    return place + ": out of range";
  }
  if (value.is_string() && schema.contains("pattern") &&
      !std::regex_search(value.get<std::string>(),
                         std::regex(schema["pattern"].get<std::string>()))) {
    return place + ": does not match the pattern";
  }
  return "";
}

std::string Breach(const Json& schema, const Json& value, const std::string& place) {
  for (const auto& [keyword, ignored] : schema.items()) {
    if (kKnown.count(keyword) == 0) {
      return place + ": the schema's keyword " + keyword + " is not known here";
    }
  }
  if (!schema.contains("description")) {
    return place + ": is not described";
  }
  if (!HasType(value, schema["type"])) {
    return place + ": not of type " + schema["type"].dump();
  }
  if (value.is_object()) {
    return BreachOfObject(schema, value, place);
  }
  for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
    const std::string breach = Breach(schema["items"], value[i], place + "/" + std::to_string(i));
    if (!breach.empty()) {
      return breach;
    }
  }
  return BreachOfScalar(schema, value, place);
}

}  // namespace

std::string BreachOfSchema(const std::string& name, const nlohmann::ordered_json& value) {
  std::ifstream file(std::string(BORVAN_JSON_SCHEMAS) + "/" + name + ".schema.json");
  if (!file) {
    return "there is no schema " + name;
  }
  return Breach(Json::parse(file), value, "");
}

}  // namespace borvanusb::tool_test
