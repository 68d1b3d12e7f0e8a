#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace borvanusb::tool_test {

// Where a value breaks a schema of docs/json, as "/registers/0/value: not of type integer"; empty
// when it doesn't. Knows the keywords that those schemas use, and reports others.
//   name  "reg-read" for docs/json/reg-read.schema.json
std::string BreachOfSchema(const std::string& name, const nlohmann::ordered_json& value);

}  // namespace borvanusb::tool_test
