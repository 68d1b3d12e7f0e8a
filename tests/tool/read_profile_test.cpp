// Reading camera profiles: values, and the line and key of errors.
#include "profile/read_profile.h"

#include <gtest/gtest.h>

#include <map>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "profile/profile_fit.h"
#include "samples.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {
namespace {

constexpr const char* kMap = R"(<device><name>D</name><addressUnitBits>8</addressUnitBits>
<width>8</width><size>8</size><peripherals><peripheral><name>S</name>
<baseAddress>0x10</baseAddress><registers><register><name>A</name>
<addressOffset>0</addressOffset></register></registers></peripheral></peripherals></device>)";

ProfileReading Read(const std::string& text) {
  const std::map<std::string, std::string> files = {{"/p/map.svd", kMap},
                                                    {"/p/bad.svd", "<device"}};
  return ReadProfileText(text, "/p/x.camera.json", [&](const std::string& name) {
    const auto file = files.find(name);
    if (file == files.end()) {
      throw Failure(ExitCode::kFile, "can't read " + name + ": no such file");
    }
    return file->second;
  });
}

// The errors, one "line: text" for each.
std::string ErrorsOf(const std::string& text) {
  std::string errors;
  for (const ListProblem& error : Read(text).errors) {
    errors += std::to_string(error.line) + ": " + error.text + "\n";
  }
  return errors;
}

TEST(ReadProfileTest, AllOfAProfile) {
  const ProfileReading reading = Read(R"({
    "name": "M1", "description": "a module",
    "cameras": [{"vid": "1d6b", "pid": "0x0105"}, {"name": "Cam*"}],
    "maps": [{"file": "map.svd", "device": "i2c", "slave": "0x6c", "mode": "16/16", "option": 3,
              "base": 256, "prefix": "LEFT", "byte-order": "low-first",
              "registers": {"S.A": {"access-order": "downwards",
                                    "after-write": [{"address": 1, "value": "0xffff"}]}}}],
    "flash": {"size": "1M", "image-region": "fw",
              "regions": [{"name": "fw", "range": "0x1000+0x1000", "files": ["*.bin"],
                           "begins-with": "55Aa"},
                          {"name": "boot", "range": "0-0xfff", "read-only": true}]},
    "presets": [{"name": "day", "settings": ["A=1", "B=2"]},
                {"name": "list", "file": "l.txt", "kind": "i2c"}],
    "options": {"timeout": 20, "mode": "16/8"}
  })");
  ASSERT_TRUE(reading.errors.empty()) << reading.errors.front().text;
  const CameraProfile& profile = reading.profile;
  EXPECT_EQ(profile.name, "M1");
  ASSERT_EQ(profile.cameras.size(), 2U);
  EXPECT_EQ(profile.cameras[0].vid, "1D6B");
  EXPECT_EQ(profile.cameras[0].pid, "0105");
  EXPECT_EQ(profile.cameras[1].name, "Cam*");
  ASSERT_EQ(profile.maps.size(), 1U);
  const ProfileMap& map = profile.maps[0];
  EXPECT_EQ(map.file, "/p/map.svd");
  EXPECT_EQ(map.prefix, "LEFT");
  EXPECT_TRUE(map.on_i2c);
  EXPECT_EQ(map.target.slave, 0x6CU);
  EXPECT_EQ(map.target.mode, 2);
  EXPECT_EQ(map.target.option, 3U);
  EXPECT_EQ(map.base, 256U);
  EXPECT_EQ(map.access_bits, 16U);
  EXPECT_EQ(map.step, 2U);  // two bytes per access, in a map with byte addresses
  EXPECT_EQ(map.rule.bytes, ByteOrder::kLowFirst);
  const AccessRule& rule = map.register_rules.at("S.A");
  EXPECT_EQ(rule.bytes, ByteOrder::kLowFirst);
  EXPECT_EQ(rule.order, AccessOrder::kDownwards);
  ASSERT_EQ(rule.after_write.size(), 1U);
  EXPECT_EQ(rule.after_write[0].value, 0xFFFFU);
  EXPECT_EQ(profile.flash.size, 0x100000U);
  ASSERT_EQ(profile.flash.regions.size(), 2U);
  EXPECT_EQ(profile.flash.regions[0].name, "boot");  // sorted by address
  EXPECT_TRUE(profile.flash.regions[0].read_only);
  EXPECT_EQ(profile.flash.regions[1].range, (Range{0x1000, 0x1FFF}));
  EXPECT_EQ(profile.flash.regions[1].begins_with, (std::vector<std::uint8_t>{0x55, 0xAA}));
  EXPECT_EQ(profile.flash.image_region, "fw");
  ASSERT_EQ(profile.presets.size(), 2U);
  EXPECT_EQ(profile.presets[0].settings, (std::vector<std::string>{"A=1", "B=2"}));
  EXPECT_EQ(profile.presets[1].file, "/p/l.txt");
  EXPECT_TRUE(profile.presets[1].on_i2c);
  EXPECT_EQ(profile.options[0], (std::pair<std::string, std::string>{"--timeout", "20"}));
  EXPECT_EQ(profile.options[1], (std::pair<std::string, std::string>{"--mode", "16/8"}));
}

TEST(ReadProfileTest, ErrorsNameLineAndKey) {
  EXPECT_EQ(ErrorsOf("{\n\"cameras\": [\n{}]}"),
            "1: the key \"name\" is missing\n"
            "3: cameras[0]: needs at least one of vid, pid, name: it would fit every camera\n");
  EXPECT_EQ(ErrorsOf("{\"name\": \"M\",\n\"cameras\": [{\"vid\": \"12\"}],\n\"falsh\": 1}"),
            "2: cameras[0].vid: must have four hexadecimal digits, such as \"1d6b\"\n"
            "3: falsh: is not a valid key; allowed are $schema, name, description, cameras, maps, "
            "flash, presets, options\n");
  const std::string head = "{\"name\": \"M\", \"cameras\": [{\"name\": \"*\"}],\n";
  EXPECT_EQ(ErrorsOf(head + "\"maps\": [{\"file\": \"map.svd\",\n\"device\": \"spi\"}]}"),
            "3: maps[0].device: must be one of chip, i2c\n");
  EXPECT_EQ(ErrorsOf(head + "\"maps\": [{\"file\": \"map.svd\", \"device\": \"i2c\"}]}"),
            "2: maps[0]: the key \"slave\" is missing: the device's address on the bus\n");
  EXPECT_EQ(ErrorsOf(head + "\"maps\": [{\"file\": \"no.svd\", \"device\": \"chip\"}]}"),
            "2: maps[0].file: can't read /p/no.svd: no such file\n");
  EXPECT_EQ(ErrorsOf(head + "\"maps\": [{\"file\": \"map.svd\", \"device\": \"chip\",\n"
                            "\"registers\": {\n\"S.B\": {}}}]}"),
            "4: maps[0].registers.S.B: is not a register of the map\n");
  EXPECT_EQ(ErrorsOf(head + "\"presets\": [{\"name\": \"a\"}, {\"name\": \"b\", \"file\": \"x\","
                            "\"settings\": []}]}"),
            "2: presets[0]: needs either \"file\" or \"settings\"\n"
            "2: presets[1]: needs either \"file\" or \"settings\"\n");
}

TEST(ReadProfileTest, MapThatCantBeUsedIsToldWithItsLine) {
  const std::string errors = ErrorsOf(
      "{\"name\": \"M\", \"cameras\": [{\"name\": \"*\"}],\n\"maps\": [{\"file\": \"bad.svd\", "
      "\"device\": \"chip\"}]}");
  EXPECT_TRUE(errors.starts_with("2: maps[0].file: /p/bad.svd:1: ")) << errors;
}

TEST(ReadProfileTest, RegionsThatCantBe) {
  const std::string head = "{\"name\": \"M\", \"cameras\": [{\"name\": \"*\"}], \"flash\": {";
  EXPECT_EQ(ErrorsOf(head + "\"regions\": [{\"name\": \"a\", \"range\": \"0-0x1fff\"},\n"
                            "{\"name\": \"b\", \"range\": \"0x1000-0x2fff\"}]}}"),
            "2: flash.regions[1]: the regions \"a\" (0x0-0x1fff) and \"b\" (0x1000-0x2fff) "
            "overlap\n");
  EXPECT_EQ(ErrorsOf(head + "\"size\": \"8K\", \"regions\": [{\"name\": \"a\", "
                            "\"range\": \"0-0x2000\"}]}}"),
            "1: flash.regions[0]: 0x0-0x2000 is beyond the flash's end, 8192 bytes (8 KiB)\n");
  EXPECT_EQ(ErrorsOf(head + "\"size\": 5000}}"),
            "1: flash.size: must be whole sectors of 4096 bytes, such as \"1M\"\n");
  EXPECT_EQ(ErrorsOf(head + "\"regions\": [{\"name\": \"a\", \"range\": \"0x1000\"}]}}"),
            "1: flash.regions[0].range: must be a range, such as \"0x0-0x3ffff\" or "
            "\"0x40000+0x1000\"\n");
  EXPECT_EQ(ErrorsOf(head + "\"regions\": [{\"name\": \"a\", \"range\": \"0-1\", "
                            "\"read-only\": true}], \"image-region\": \"a\"}}"),
            "1: flash.image-region: is a region that is read-only\n");
  EXPECT_EQ(ErrorsOf(head + "\"regions\": [{\"name\": \"a b\", \"range\": \"0-0xfff\"}]}}"),
            "1: flash.regions[0].name: may have letters, digits and _ - . only\n");
}

TEST(ReadProfileTest, TextsThatAreNoProfile) {
  EXPECT_EQ(ErrorsOf("[]"), "1: must be an object: {…}\n");
  EXPECT_TRUE(ErrorsOf("{\n\"name\": \"M\"\n\"cameras\"").starts_with("3: is not valid JSON: "))
      << "";
  EXPECT_EQ(ErrorsOf("{\"name\": \"a\",\n\"name\": \"b\"}"), "2: name: is there twice\n");
  EXPECT_EQ(ErrorsOf("{\"options\": " + std::string(40, '[')),
            "1: is nested deeper than 32 levels\n");
  EXPECT_EQ(ErrorsOf(std::string((1U << 20U) + 1, ' ')),
            "0: is larger than 1048576 bytes (1 MiB)\n");
}

TEST(ReadProfileTest, FitCountsTheParts) {
  CameraProfile profile;
  profile.cameras = {{"1234", "", ""}, {"1234", "0001", "Virtual*"}};
  const CameraIdentity camera{0, "p", "virtual camera", "1234", "0001"};
  EXPECT_EQ(FitOf(profile, camera), 3);
  EXPECT_EQ(FitOf(profile, {0, "p", "other", "1234", "0001"}), 1);
  EXPECT_EQ(FitOf(profile, {0, "p", "Virtual camera", "1235", "0001"}), 0);
  EXPECT_EQ(CamerasText(profile), "vid 1234 or vid 1234, pid 0001, name Virtual*");
}

TEST(SampleProfilesTest, AreRead) {
  int found = 0;
  for (const std::string& name : FilesIn(kSamples)) {
    if (name.ends_with(".camera.json")) {
      const ProfileReading reading = ReadProfile(Format("{}/{}", kSamples, name));
      EXPECT_TRUE(reading.errors.empty())
          << name << ":" << reading.errors.front().line << ": " << reading.errors.front().text;
      ++found;
    }
  }
  EXPECT_EQ(found, 2);
}

}  // namespace
}  // namespace borvanusb::tool_test
