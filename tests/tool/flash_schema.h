#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace borvanusb::tool_test {

// What of a command's JSON does not follow docs/json/NAME.schema.json; empty when all does. Knows
// the words that the schemas of the flash commands use.
std::string SchemaComplaints(const std::string& name, const nlohmann::ordered_json& value);

}  // namespace borvanusb::tool_test
