#include "flash_schema.h"

#include <algorithm>
#include <fstream>

namespace borvanusb::tool_test {
namespace {

using Json = nlohmann::ordered_json;

class Checker {
 public:
  explicit Checker(const Json& root) : root_(root) {}

  std::string Check(const Json& schema, const Json& value, const std::string& place) const {
    if (schema.contains("$ref")) {
      const std::string name = schema["$ref"].get<std::string>().substr(8);  // behind #/$defs/
      return Check(root_["$defs"].at(name), value, place);
    }
    for (const char* word : {"anyOf", "oneOf"}) {
      if (schema.contains(word)) {
        return CheckAny(schema[word], value, place);
      }
    }
    if (schema.contains("enum")) {
      const auto& choices = schema["enum"];
      return std::find(choices.begin(), choices.end(), value) != choices.end()
                 ? ""
                 : place + ": none of the choices\n";
    }
    if (schema.contains("const")) {
      return schema["const"] == value ? "" : place + ": another constant\n";
    }
    if (!HasType(schema.at("type"), value)) {
      return place + ": another type\n";
    }
    if (value.is_object()) {
      return CheckObject(schema, value, place);
    }
    std::string complaints;
    if (value.is_array()) {
      for (const Json& item : value) {
        complaints += Check(schema.at("items"), item, place + "[]");
      }
    }
    return complaints;
  }

 private:
  std::string CheckAny(const Json& choices, const Json& value, const std::string& place) const {
    std::string complaints;
    for (const Json& choice : choices) {
      const std::string here = Check(choice, value, place);
      if (here.empty()) {
        return "";
      }
      complaints += here;
    }
    return complaints;
  }

  std::string CheckObject(const Json& schema, const Json& value, const std::string& place) const {
    std::string complaints;
    for (const auto& [key, part] : value.items()) {
      const auto property = schema.at("properties").find(key);
      complaints += property == schema.at("properties").end()
                        ? place + "." + key + ": not described\n"
                        : Check(*property, part, place + "." + key);
    }
    for (const Json& key : schema.at("required")) {
      if (!value.contains(key.get<std::string>())) {
        complaints += place + "." + key.get<std::string>() + ": missing\n";
      }
    }
    return complaints;
  }

  static bool HasType(const Json& type, const Json& value) {
    if (type.is_array()) {
      return std::any_of(type.begin(), type.end(),
                         [&](const Json& choice) { return HasType(choice, value); });
    }
    const auto name = type.get<std::string>();
    return (name == "object" && value.is_object()) || (name == "array" && value.is_array()) ||
           (name == "string" && value.is_string()) || (name == "boolean" && value.is_boolean()) ||
           (name == "integer" && value.is_number_integer()) ||
           (name == "number" && value.is_number()) || (name == "null" && value.is_null());
  }

  const Json& root_;
};

}  // namespace

std::string SchemaComplaints(const std::string& name, const Json& value) {
  const std::string file = std::string(BORVAN_JSON_SCHEMAS) + "/" + name + ".schema.json";
  std::ifstream stream(file);
  const Json schema = Json::parse(stream, nullptr, false);
  if (schema.is_discarded()) {
    return "can't read " + file;
  }
  return Checker(schema).Check(schema, value, name);
}

}  // namespace borvanusb::tool_test
