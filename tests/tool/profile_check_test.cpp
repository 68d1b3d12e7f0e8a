// The findings of `profile check`, in addition to errors of reading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/failure.h"
#include "base/format.h"
#include "names_support.h"
#include "profile_commands/check.h"
#include "profile_commands/check_options.h"
#include "profile_commands/check_profile.h"
#include "samples.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// The text of a profile with these parts, one per line from line 2.
std::string ProfileText(const std::vector<std::string>& parts) {
  std::string text = "{\"name\": \"M\", \"cameras\": [{\"name\": \"*\"}]";
  for (const std::string& part : parts) {
    text += ",\n" + part;
  }
  return text + "}";
}

std::string ReadTestFile(const std::string& name) {
  if (name == "chip.svd") {
    return kChipMap;
  }
  if (name == "sensor.svd") {
    return kSensorMap;
  }
  if (name == "good.txt") {
    return "0xfff8, 0x6c,\n0xfffe, 0x03,\n0x3500, 0x01,\n";
  }
  if (name == "bare.txt") {
    return "0x3500, 0x01,\n";
  }
  if (name == "bad.txt") {
    return "0xfff8, 0x6c,\n0xfffe, 0x03,\n0x3500, 0x1ff,\n";
  }
  throw Failure(ExitCode::kFile, "can't read " + name);
}

std::vector<std::string> Lines(const std::vector<ListProblem>& problems) {
  std::vector<std::string> lines;
  lines.reserve(problems.size());
  for (const ListProblem& problem : problems) {
    lines.push_back(std::to_string(problem.line) + ": " + problem.text);
  }
  return lines;
}

ProfileFindings Checked(const std::vector<std::string>& parts) {
  const std::string text = ProfileText(parts);
  const auto reading =
      std::make_shared<const ProfileReading>(ReadProfileText(text, "m.camera.json", ReadTestFile));
  return CheckProfile(text, reading, ReadTestFile, AllCommandRules());
}

std::vector<std::string> Errors(const std::vector<std::string>& parts) {
  return Lines(Checked(parts).errors);
}
std::vector<std::string> Remarks(const std::vector<std::string>& parts) {
  const ProfileFindings findings = Checked(parts);
  EXPECT_THAT(Lines(findings.errors), IsEmpty());
  return Lines(findings.remarks);
}

const std::string kMaps = R"("maps": [{"file": "chip.svd", "device": "chip"}, )"
                          R"({"file": "sensor.svd", "device": "i2c", "slave": 108}])";

TEST(ProfileCheckTest, GoodProfile) {
  const ProfileFindings findings =
      Checked({kMaps, R"("presets": [{"name": "day", "settings": ["EXPOSURE=1", "CHIP.CTRL.GAIN=3",
"0x8000=1"]}])",
               R"("options": {"slave": "0x6c", "timeout": 20})"});
  EXPECT_THAT(Lines(findings.errors), IsEmpty());
  EXPECT_THAT(Lines(findings.remarks), IsEmpty());
}

TEST(ProfileCheckTest, SettingsThatMeanNothingOrAreRefused) {
  EXPECT_THAT(Errors({kMaps, R"("presets": [{"name": "day", "settings": [)", "\"EXPOSUR=1\"",
                      "\"CHIP.CTRL.GAIN=21\"", "\"CHIP.CTRL.STATE=1\"", "\"0x100=256\"",
                      "\"EXPOSURE\"", "\"EXPOSURE=1\"]}]"})
                  .size(),
              1U);  // a comma after the bracket is not valid JSON
  EXPECT_THAT(
      Errors({kMaps,
              "\"presets\": [{\"name\": \"day\", \"settings\": [\n\"EXPOSUR=1\",\n"
              "\"CHIP.CTRL.GAIN=21\",\n\"CTRL=1\",\n\"0x100=256\",\n\"EXPOSURE\",\n"
              "\"EXPOSURE=1\"]}]"}),
      ElementsAre("4: presets[0].settings[0]: the profile \"M\" has no register or field EXPOSUR; "
                  "did you mean EXPOSURE?",
                  "5: presets[0].settings[1]: CHIP.CTRL.GAIN: 21 is outside the allowed range",
                  "6: presets[0].settings[2]: CTRL is ambiguous: CHIP.CTRL, SENSOR.CTRL",
                  "7: presets[0].settings[3]: 0x100: 256 is too big for 8 bits",
                  "8: presets[0].settings[4]: EXPOSURE: is not a valid setting"));
}

TEST(ProfileCheckTest, FieldsThatCanNotBeWrittenAlone) {
  EXPECT_THAT(Errors({kMaps, R"("presets": [{"name": "a", "settings": ["KEY.LOW=1"]}])"}).size(),
              1U);
  EXPECT_THAT(
      Errors({kMaps, R"("presets": [{"name": "a", "settings": ["KEY.LOW=1", "KEY.HIGH=2"]}])"}),
      IsEmpty());
}

TEST(ProfileCheckTest, TwoRegistersOfOneName) {
  const std::string twice =
      "\"maps\": [{\"file\": \"sensor.svd\", \"device\": \"i2c\", \"slave\": 16},\n"
      "{\"file\": \"sensor.svd\", \"device\": \"i2c\", \"slave\": 17";
  EXPECT_THAT(Errors({twice + "}]"}),
              ElementsAre("3: maps[1]: SENSOR.EXPOSURE is also a register of sensor.svd; give one "
                          "of the maps a \"prefix\"",
                          "3: maps[1]: SENSOR.CTRL is also a register of sensor.svd; give one of "
                          "the maps a \"prefix\""));
  EXPECT_THAT(Errors({twice + ", \"prefix\": \"RIGHT\"}]"}), IsEmpty());
}

TEST(ProfileCheckTest, RegistersThatCanNotBeReached) {
  EXPECT_THAT(Remarks({R"("maps": [{"file": "sensor.svd", "device": "i2c", "slave": 1,)"
                       R"( "base": "0xcafd"}])"}),
              ElementsAre("2: maps: this register can't be used: SENSOR.CTRL: its address, "
                          "0x3503, is beyond 0xffff"));
}

TEST(ProfileCheckTest, ListFilesOfPresets) {
  const auto preset = [](const std::string& file) {
    return R"("presets": [{"name": "a", "file": ")" + file + R"(", "kind": "i2c"}])";
  };
  EXPECT_THAT(Errors({preset("good.txt")}), IsEmpty());
  EXPECT_THAT(Errors({preset("none.txt")}), ElementsAre("2: presets[0].file: can't read none.txt"));
  EXPECT_EQ(Errors({preset("bad.txt")}).size(), 1U);
  EXPECT_TRUE(Errors({preset("bad.txt")})[0].starts_with("2: presets[0].file: bad.txt:3: "))
      << Errors({preset("bad.txt")})[0];
  EXPECT_THAT(Errors({preset("bare.txt")}),
              ElementsAre("2: presets[0].file: bare.txt does not begin with 0xfff8 and 0xfffe, so "
                          "it does not name its device; put the two lines at its beginning"));
}

TEST(ProfileCheckTest, EveryOptionWithAValueIsKnown) {
  for (const CommandRule& rule : AllCommandRules()) {
    for (const OptionDescription& option : rule.description.options) {
      if (!option.positional && !option.value.empty()) {
        EXPECT_THAT(DefaultProblem(option.names.back(), "", AllCommandRules()),
                    Not(HasSubstr("no command has this option")));
      }
    }
  }
}

TEST(ProfileCheckTest, DefaultsOfOptions) {
  EXPECT_THAT(
      Errors({"\"options\": {\"slvae\": 1,\n\"mode\": \"9/9\",\n\"camera\": \"0\",\n\"json\": 1,\n"
              "\"timeout\": 0,\n\"slave\": 256,\n\"rate\": 5}"}),
      ElementsAre("2: options.slvae: no command has this option; did you mean slave?",
                  "3: options.mode: \"9/9\" is not a valid width mode: bits of address and data, "
                  "8/8, 16/8, 16/16, 32/8, 32/16 or 32/32, or 0 to 5",
                  "4: options.camera: can't have a default in a profile",
                  "5: options.json: takes no value; only options with a value have defaults",
                  "6: options.timeout: \"0\" is not allowed: a number from 0.1 to 3600, decimals "
                  "with a point",
                  "7: options.slave: \"256\" is not allowed: a number from 0 to 255, "
                  "decimal or with 0x"));
}

TEST(ProfileCheckTest, RegionsAndTheirFiles) {
  EXPECT_THAT(
      Errors(
          {R"("flash": {"regions": [{"name": "a", "range": "0+4K", "files": ["out/fw.bin"]}]})"}),
      ElementsAre("2: flash.regions[0].files[0]: \"out/fw.bin\" fits no file: it is compared with "
                  "names without their folder"));
  EXPECT_THAT(
      Remarks({"\"flash\": {\"regions\": [{\"name\": \"a\", \"range\": \"0+4K\", \"files\": "
               "[\"fw*.bin\"]},\n{\"name\": \"b\", \"range\": \"4K+100\", \"files\": "
               "[\"FW*.bin\"]}]}"}),
      ElementsAre("3: flash.regions[1].range: 0x1000-0x1063 does not consist of whole sectors of "
                  "4096 bytes: an erase of the region also affects its neighbours",
                  "3: flash.regions[1].files[0]: \"FW*.bin\" is also in region a; a file name that "
                  "matches both does not select a region"));
}

TEST(ProfileCheckTest, CommandOnTheSamples) {
  CommandDesk desk;
  for (const std::string name : {"virtual-1m", "virtual-4m"}) {
    const std::string file = Format("{}/{}.camera.json", kSamples, name);
    EXPECT_EQ(desk.Do(ProfileCheckCommand{file}, "profile-check"), ExitCode::kDone)
        << desk.output.out;
    EXPECT_EQ(desk.output.notes, "");
  }
  EXPECT_EQ(desk.output.out, kSamples +
                                 "/virtual-4m.camera.json: good: 2 maps, 8 registers, 3 flash "
                                 "regions, 2 presets\n");
  EXPECT_EQ(desk.Chip().transfers, 0U);
}

TEST(ProfileCheckTest, CommandTellsEveryErrorWithItsLine) {
  CommandDesk desk;
  TestFolder folder;
  const std::string file =
      folder.Write("x.camera.json", "{\"name\": 7,\n\"cameras\": [{\"vid\": \"12\"}]}");
  EXPECT_EQ(desk.Do(ProfileCheckCommand{file}, "profile-check"), ExitCode::kFile);
  EXPECT_EQ(desk.output.out,
            file + ":1: name: must be a text that is not empty\n" + file +
                ":2: cameras[0].vid: must have four hexadecimal digits, such as \"1d6b\"\n");
  EXPECT_EQ(desk.output.errors, "borvanusb: profile check: " + file + ": 2 errors\n");
  EXPECT_EQ(desk.result["errors"][1]["line"], 2);
}

}  // namespace
}  // namespace borvanusb::tool_test
