// The JSON of the flash commands matches the schemas in docs/json.
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"

#include "flash_support.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {
namespace {

class FlashSchemaTest : public FlashTest {
 protected:
  FlashSchemaTest() {
    Flash() = Pattern(64 * kKibi, 1);
    image_ = WriteFile("image.bin", Pattern(0x1500, 2));
  }
  std::string image_;
};

TEST_F(FlashSchemaTest, EveryCommandPrintsWhatItsSchemaSays) {
  EXPECT_EQ(BreachOfSchema("flash-read", Run(FlashReadCommand{{0, 0xFF}, File("dump.bin")}).result),
            "");
  EXPECT_EQ(
      BreachOfSchema("flash-word", Run(FlashWordCommand{0, std::nullopt, false, false, {}}).result),
      "");
  EXPECT_EQ(BreachOfSchema("flash-word", Run(FlashWordCommand{0, 0, true, false, {}}).result), "");
  EXPECT_EQ(
      BreachOfSchema("flash-erase", Run(FlashEraseCommand{{0, 0xFFF}, true, false, {}}).result),
      "");
  EXPECT_EQ(BreachOfSchema("flash-map", Run(FlashMapCommand{}).result), "");
  EXPECT_EQ(BreachOfSchema("flash-verify", Run(FlashVerifyCommand{image_, 0x100, ""}).result), "");
}

TEST_F(FlashSchemaTest, ProgramPrintsAndReportsWhatItsSchemaSays) {
  FlashProgramCommand command;
  command.image = image_;
  command.address = 0x1F00;
  command.report = File("report.json");
  FailFrom(300);
  Run(command);
  EXPECT_EQ(BreachOfSchema("flash-program", nlohmann::ordered_json::parse(ReadFile("report.json"))),
            "");
  Heal();
  EXPECT_EQ(BreachOfSchema("flash-program", Run(command).result), "");
  command.all = true;
  command.report.clear();
  host.child = [](const std::vector<std::string>&, const auto&) { return 6; };
  Run(command);
  EXPECT_EQ(
      BreachOfSchema("flash-program", nlohmann::ordered_json::parse(output->json_lines.at(0))), "");
}

}  // namespace
}  // namespace borvanusb::tool_test
