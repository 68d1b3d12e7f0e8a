#include "support/json_schema.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <utility>

namespace borvanusb::tool_test {
namespace {

using Json = nlohmann::ordered_json;

const std::set<std::string> kKnown = {"$schema",
                                      "$id",
                                      "title",
                                      "description",
                                      "type",
                                      "properties",
                                      "required",
                                      "items",
                                      "enum",
                                      "minimum",
                                      "maximum",
                                      "pattern",
                                      "additionalProperties",
                                      "$ref",
                                      "$defs",
                                      "anyOf",
                                      "oneOf",
                                      "const",
                                      "dependentRequired",
                                      "format"};

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

// The members that an object lacks.
std::string Lack(const Json& members, const Json& value, const std::string& place) {
  for (const auto& member : members) {
    if (!value.contains(member)) {
      return place + ": lacks " + member.get<std::string>();
    }
  }
  return "";
}

// Checks values against one schema file, `root_`.
class Checker {
 public:
  explicit Checker(Json root) : root_(std::move(root)) {}
  std::string Check(const Json& value) const { return Breach(root_, value, ""); }

 private:
  std::string Breach(const Json& schema, const Json& value, const std::string& place) const;
  std::string BreachOfObject(const Json& schema, const Json& value, const std::string& place) const;
  std::string BreachOfChoices(const Json& choices, std::size_t most, const Json& value,
                              const std::string& place) const;

  const Json root_;
};

std::string At(const std::string& place, const std::string& what) {
  return place + ": " + what;
}

std::string Below(const std::string& place, const std::string& name) {
  return place + "/" + name;
}

std::string Checker::BreachOfObject(const Json& schema, const Json& value,
                                    const std::string& place) const {
  Json required = schema.value("required", Json::array());
  const Json dependent = schema.value("dependentRequired", Json::object());
  for (const auto& [name, others] : dependent.items()) {
    if (value.contains(name)) {
      required.insert(required.end(), others.begin(), others.end());
    }
  }
  if (std::string lack = Lack(required, value, place); !lack.empty()) {
    return lack;
  }
  const Json properties = schema.value("properties", Json::object());
  if (schema.value("additionalProperties", Json(false)) == true) {
    return "";
  }
  for (const auto& [name, member] : value.items()) {
    const Json others = schema.value("additionalProperties", Json(false));
    if (!properties.contains(name) && !others.is_object()) {
      return At(place, "must not have " + name);
    }
    std::string breach =
        Breach(properties.contains(name) ? properties[name] : others, member, Below(place, name));
    if (!breach.empty()) {
      return breach;
    }
  }
  return "";
}

std::string BreachOfScalar(const Json& schema, const Json& value, const std::string& place) {
  if (schema.contains("const") && value != schema["const"]) {
    return place + ": not " + schema["const"].dump();
  }
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

// At least one and at most `most` of the choices must match.
std::string Checker::BreachOfChoices(const Json& choices, std::size_t most, const Json& value,
                                     const std::string& place) const {
  std::string breaches;
  std::size_t fitting = 0;
  for (const Json& choice : choices) {
    const std::string breach = Breach(choice, value, place);
    fitting += breach.empty() ? 1U : 0U;
    breaches += (breaches.empty() ? "" : "; ") + breach;
  }
  if (fitting == 0) {
    return place + ": none of the choices: " + breaches;
  }
  return fitting > most ? place + ": more than one of the choices" : "";
}

std::string Checker::Breach(const Json& schema, const Json& value, const std::string& place) const {
  for (const auto& [keyword, ignored] : schema.items()) {
    if (!kKnown.contains(keyword)) {
      return At(place, "the schema has an unknown keyword, " + keyword);
    }
  }
  if (schema.contains("$ref")) {
    const std::string name = schema["$ref"].get<std::string>();  // "#/$defs/camera"
    return Breach(root_["$defs"].at(name.substr(name.rfind('/') + 1)), value, place);
  }
  if (!schema.contains("description") && !schema.contains("title") &&
      schema.value("type", Json()) != "null") {
    return place + ": is not described";
  }
  for (const char* word : {"anyOf", "oneOf"}) {
    if (schema.contains(word)) {
      return BreachOfChoices(schema[word], word[0] == 'o' ? 1 : schema[word].size(), value, place);
    }
  }
  if (schema.contains("type") && !HasType(value, schema["type"])) {
    return place + ": not of type " + schema["type"].dump();
  }
  if (value.is_object()) {
    return BreachOfObject(schema, value, place);
  }
  for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
    std::string breach = Breach(schema["items"], value[i], Below(place, std::to_string(i)));
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
  return Checker(Json::parse(file)).Check(value);
}

}  // namespace borvanusb::tool_test
