#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace borvanusb::tool_test {

// Where a value violates a schema of docs/json, as "/registers/0/value: not of type integer". Empty
// if it is valid. Supports only the keywords in those schemas, and reports others.
//   name  "reg-read" for docs/json/reg-read.schema.json
std::string BreachOfSchema(const std::string& name, const nlohmann::ordered_json& value);

}  // namespace borvanusb::tool_test
