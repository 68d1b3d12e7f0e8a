// The JSON schema checker finds violations.
#include "support/json_schema.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace borvanusb::tool_test {
namespace {

nlohmann::ordered_json Camera() {
  return {{"index", 0}, {"path", "p"}, {"name", "n"}, {"vid", "1234"}, {"pid", "00FF"}};
}

TEST(JsonSchemaTest, GoodValueHasNoBreach) {
  EXPECT_EQ(BreachOfSchema("list", {{"cameras", {Camera()}}}), "");
  EXPECT_EQ(BreachOfSchema("list-watch", {{"event", "left"}, {"camera", Camera()}}), "");
}

TEST(JsonSchemaTest, MissingForeignAndWrongMembersAreFound) {
  EXPECT_EQ(BreachOfSchema("reg-read", {{"wide", true}, {"checked", true}}), ": lacks registers");
  EXPECT_EQ(BreachOfSchema("reg-read", {{"wide", true},
                                        {"checked", true},
                                        {"registers", nlohmann::ordered_json::array()},
                                        {"more", 1}}),
            ": must not have more");
  EXPECT_EQ(BreachOfSchema("reg-read", {{"wide", true},
                                        {"checked", true},
                                        {"registers", {{{"address", "0x1a3"}, {"value", 1}}}}}),
            "/registers/0/address: not of type \"integer\"");
  EXPECT_EQ(BreachOfSchema("reg-read", {{"wide", true},
                                        {"checked", true},
                                        {"registers", {{{"address", 1}, {"value", -1}}}}}),
            "/registers/0/value: out of range");
}

TEST(JsonSchemaTest, DefinitionsAndChoicesAreFollowed) {
  const nlohmann::ordered_json camera = {
      {"index", 0}, {"path", "p"}, {"name", "n"}, {"vid", "1234"}, {"pid", "00FF"}};
  EXPECT_EQ(BreachOfSchema("flash-word", {{"camera", camera}, {"address", 0}, {"value", "12"}}),
            "/value: not of type \"integer\"");
  EXPECT_EQ(BreachOfSchema("flash-word", {{"camera", 1}, {"address", 0}, {"value", 1}}),
            "/camera: not of type \"object\"");
}

TEST(JsonSchemaTest, ValuesAndPatternsAreHeld) {
  auto camera = Camera();
  EXPECT_EQ(BreachOfSchema("list-watch", {{"event", "gone"}, {"camera", camera}}),
            "/event: not among the values allowed");
  camera["vid"] = "12345";
  EXPECT_EQ(BreachOfSchema("list", {{"cameras", {camera}}}),
            "/cameras/0/vid: does not match the pattern");
}

}  // namespace
}  // namespace borvanusb::tool_test
