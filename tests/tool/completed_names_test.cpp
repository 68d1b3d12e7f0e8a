// The names that shells complete.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "names/completed_names.h"
#include "names_support.h"
#include "profile_commands/names.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Registers(const std::string& word) {
  return CompletedNames(NameKind::kRegisters, word, RegisterNames(TestProfile()));
}
std::vector<std::string> Settings(const std::string& word) {
  return CompletedNames(NameKind::kSettings, word, RegisterNames(TestProfile()));
}

TEST(CompletedNamesTest, WholeNamesOfRegisters) {
  EXPECT_THAT(Registers("SENSOR."), ElementsAre("SENSOR.EXPOSURE", "SENSOR.CTRL"));
  EXPECT_THAT(Registers("chip.ct"), ElementsAre("CHIP.CTRL", "CHIP.CTRL2"));
  EXPECT_THAT(Registers("nothing"), IsEmpty());
}

TEST(CompletedNamesTest, FieldsBehindADot) {
  EXPECT_THAT(Registers("CHIP.CTRL."),
              ElementsAre("CHIP.CTRL.MODE", "CHIP.CTRL.GAIN", "CHIP.CTRL.STATE"));
  EXPECT_THAT(Registers("CHIP.CTRL.G"), ElementsAre("CHIP.CTRL.GAIN"));
}

TEST(CompletedNamesTest, LastPartsThatAreClear) {
  EXPECT_THAT(Registers("EXP"), ElementsAre("EXPOSURE"));
  EXPECT_THAT(Registers("CTR"), ElementsAre("CTRL2"));  // CTRL is in both
}

TEST(CompletedNamesTest, SettingsAndTheirValues) {
  EXPECT_THAT(Settings("EXP"), ElementsAre("EXPOSURE="));
  EXPECT_THAT(Settings("CHIP.CTRL.MODE="), ElementsAre("CHIP.CTRL.MODE=off", "CHIP.CTRL.MODE=hdr"));
  EXPECT_THAT(Settings("CHIP.CTRL.MODE=H"), ElementsAre("CHIP.CTRL.MODE=hdr"));
  EXPECT_THAT(Settings("CHIP.CTRL="), IsEmpty());
  EXPECT_THAT(Settings("X="), IsEmpty());
}

TEST(CompletedNamesTest, CommandWithTheCamerasProfile) {
  CommandDesk desk;
  desk.host.environment["BORVANUSB_PROFILES"] = BORVAN_SAMPLES;
  EXPECT_EQ(desk.Do(ProfileNamesCommand{NameKind::kRegions, ""}, "profile-names"), ExitCode::kDone);
  EXPECT_EQ(desk.output.out, "boot\nfirmware\nconfig\n");
  desk.Do(ProfileNamesCommand{NameKind::kPresets, "n"}, "profile-names");
  EXPECT_EQ(desk.output.out, "night\n");
  EXPECT_EQ(desk.Chip().transfers, 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
