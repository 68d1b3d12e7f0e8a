// The JSON file: everything it can say, and a clear line for everything wrong.
#include <filesystem>
#include <fstream>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::AbsentSlave;
using virtual_camera::BeyondEnd;
using virtual_camera::CameraConfiguration;
using virtual_camera::ConfigurationError;
using virtual_camera::Direction;
using virtual_camera::FaultConfiguration;
using virtual_camera::LoadConfiguration;
using virtual_camera::NodeType;

class ConfigurationTest : public testing::Test {
 protected:
  virtual_camera::Configuration Load(const std::string& text) {
    folder.Write("cameras.json", text);
    return LoadConfiguration(folder.File("cameras.json"));
  }
  // What the error says behind the file's name.
  std::string ErrorOf(const std::string& text) {
    try {
      Load(text);
    } catch (const ConfigurationError& error) {
      const std::string line = error.what();
      const std::string prefix = folder.File("cameras.json") + ": ";
      EXPECT_EQ(line.substr(0, prefix.size()), prefix);
      EXPECT_EQ(line.find('\n'), std::string::npos);
      return line.substr(std::min(prefix.size(), line.size()));
    }
    return "no error";
  }
  // As above, for the keys of one camera.
  std::string CameraErrorOf(const std::string& keys) {
    return ErrorOf(R"({"cameras": [{"path": "a", )" + keys + "}]}");
  }

  ScratchFolder folder;
};

TEST_F(ConfigurationTest, EveryKeyIsRead) {
  const CameraConfiguration camera = Load(R"({
        "$schema": "virtual-camera.schema.json",
        "cameras": [{
          "path": "\\\\?\\usb#vid_1234&pid_5678",
          "name": "Kamera \u00e4",
          "nodes": ["camera-terminal", "selector", "processing", "streaming", "vendor"],
          "flash": {"size": "4M", "file": "f.bin", "beyond_end": "fail",
                    "erase_ms": 45, "program_us": "0x2bc"},
          "registers": {"0x1a3": "0x20", "16": 4294967295},
          "list_header": "page",
          "sensors": [{"slave": "0x36", "mode": 2, "registers": {"0x0100": "0xABCD"}},
                      {"slave": 16, "mode": 5}],
          "absent_slave": "ones",
          "lengths": {"1": 8, "7": "0xFFFFFFFF"},
          "faults": [{"selector": 4, "direction": "set", "at": 3, "result": "0x80070017"}],
          "seed": "0xFFFFFFFFFFFFFFFF",
          "trace": "t.jsonl",
          "state": "s.state",
          "plugged": false
        }]})")
                                         .cameras.at(0);
  EXPECT_EQ(camera.path, "\\\\?\\usb#vid_1234&pid_5678");
  EXPECT_EQ(camera.name, "Kamera \xC3\xA4");
  EXPECT_EQ(camera.nodes,
            (std::vector{NodeType::kCameraTerminal, NodeType::kSelector, NodeType::kProcessing,
                         NodeType::kStreaming, NodeType::kVendor}));
  EXPECT_EQ(camera.flash.size, 4U * 1024 * 1024);
  EXPECT_EQ(camera.flash.file, folder.File("f.bin"));
  EXPECT_EQ(camera.flash.beyond_end, BeyondEnd::kFail);
  EXPECT_EQ(camera.flash.erase_ms, 45U);
  EXPECT_EQ(camera.flash.program_us, 700U);
  EXPECT_EQ(camera.registers,
            (std::map<std::uint32_t, std::uint32_t>{{0x1A3, 0x20}, {16, 0xFFFFFFFF}}));
  EXPECT_EQ(camera.list_header, virtual_camera::ListHeader::kPage);
  ASSERT_EQ(camera.sensors.size(), 2U);
  EXPECT_EQ(camera.sensors[0].slave, 0x36);
  EXPECT_EQ(camera.sensors[0].mode, 2);
  EXPECT_EQ(camera.sensors[0].registers, (std::map<std::uint32_t, std::uint32_t>{{0x100, 0xABCD}}));
  EXPECT_EQ(camera.sensors[1].slave, 16);
  EXPECT_EQ(camera.absent_slave, AbsentSlave::kOnes);
  EXPECT_EQ(camera.lengths, (std::array<std::uint32_t, 7>{8, 12, 11, 64, 64, 64, 0xFFFFFFFF}));
  ASSERT_EQ(camera.faults.size(), 1U);
  EXPECT_EQ(camera.seed, 0xFFFFFFFFFFFFFFFFU);
  EXPECT_EQ(camera.trace_file, folder.File("t.jsonl"));
  EXPECT_EQ(camera.state_file, folder.File("s.state"));
  EXPECT_FALSE(camera.plugged);
}

TEST_F(ConfigurationTest, OnlyThePathIsNeeded) {
  const auto configuration = Load(R"({"cameras": [{"path": "a"}, {"path": "b"}]})");
  const CameraConfiguration& camera = configuration.cameras.at(1);
  EXPECT_EQ(camera.nodes,
            (std::vector{NodeType::kCameraTerminal, NodeType::kProcessing, NodeType::kVendor}));
  EXPECT_EQ(camera.flash.size, 1024U * 1024);
  EXPECT_EQ(camera.flash.file, folder.File("cameras.camera1.flash"));
  EXPECT_EQ(camera.state_file, folder.File("cameras.camera1.state"));
  EXPECT_EQ(camera.trace_file, "");
  EXPECT_EQ(camera.flash.beyond_end, BeyondEnd::kWrap);
  EXPECT_EQ(camera.absent_slave, AbsentSlave::kFailure);
  EXPECT_TRUE(camera.plugged);
}

TEST_F(ConfigurationTest, NoCamerasAndNoNodesAreAllowed) {
  EXPECT_TRUE(Load(R"({"cameras": []})").cameras.empty());
  EXPECT_TRUE(Load(R"({"cameras": [{"path": "a", "nodes": []}]})").cameras[0].nodes.empty());
}

TEST_F(ConfigurationTest, EveryFaultIsRead) {
  const std::vector<FaultConfiguration> faults = Load(R"({"cameras": [{"path": "a", "faults": [
        {"every": 2, "result": "S_FALSE", "delay_ms": 5},
        {"selector": "any", "direction": "any", "probability": 0.25, "result": -2147024865},
        {"selector": 1, "wrong_tag": true},
        {"length": 70000},
        {"direction": "get", "short": 2},
        {"stuck_word": "0x1000"},
        {"at": 7, "lie": true},
        {"unplug": {"after": 9, "back_after_ms": 500}},
        {"at": 4, "unplug": {}},
        {"result": 5},
        {"result": "0xffffffff"}
      ]}]})")
                                                     .cameras.at(0)
                                                     .faults;
  ASSERT_EQ(faults.size(), 11U);
  EXPECT_EQ(faults[0].every, 2U);
  EXPECT_EQ(faults[0].result, 1);
  EXPECT_EQ(faults[0].delay_ms, 5U);
  EXPECT_FALSE(faults[0].selector.has_value());
  EXPECT_FALSE(faults[1].selector.has_value());
  EXPECT_FALSE(faults[1].direction.has_value());
  EXPECT_EQ(faults[1].probability, 0.25);
  EXPECT_EQ(faults[1].result, Code(0x8007001F));
  EXPECT_TRUE(faults[2].wrong_tag);
  EXPECT_EQ(faults[2].direction, Direction::kGet);
  EXPECT_EQ(faults[3].length, 70000U);
  EXPECT_EQ(faults[3].direction, Direction::kLength);
  EXPECT_EQ(faults[4].short_answer, 2U);
  EXPECT_EQ(faults[5].stuck_word, 0x1000U);
  EXPECT_EQ(faults[5].direction, Direction::kSet);
  EXPECT_TRUE(faults[6].lie);
  EXPECT_EQ(faults[6].at, 7U);
  EXPECT_EQ(faults[7].at, 9U);
  EXPECT_EQ(faults[7].unplug.value().back_after_ms, 500U);
  EXPECT_EQ(faults[8].at, 4U);
  EXPECT_FALSE(faults[8].unplug.value().back_after_ms.has_value());
  EXPECT_EQ(faults[9].result, 5);
  EXPECT_EQ(faults[10].result, -1);
}

TEST_F(ConfigurationTest, WrongFilesAreNamed) {
  EXPECT_EQ(ErrorOf("{"), "line 1, column 2: must be JSON in UTF-8");
  EXPECT_EQ(ErrorOf("{\n  \"cameras\": nothing}"), "line 2, column 15: must be JSON in UTF-8");
  EXPECT_EQ(ErrorOf("[]"), "must be an object with the keys $schema, cameras");
  EXPECT_EQ(ErrorOf("{}"), "cameras: missing; must be a list of cameras");
  EXPECT_EQ(ErrorOf(R"({"cameras": {}})"), "cameras: must be a list of cameras");
  EXPECT_EQ(ErrorOf(R"({"cameras": [], "camera": 1})"),
            "camera: unknown key; allowed are $schema, cameras");
  EXPECT_EQ(ErrorOf(R"({"cameras": [{}]})"),
            "cameras[0].path: missing; must be the device path, a text");
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": ""}]})"), "cameras[0].path: must not be empty");
}

// Hosts list cameras by their paths in lower case.
TEST_F(ConfigurationTest, PathsThatHostsTakeForOneAreRefused) {
  const std::string expected =
      "cameras[1].path: must differ from cameras[0].path in more than upper and lower case";
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": "a"}, {"path": "a"}]})"), expected);
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": "usb#A1"}, {"path": "USB#a1"}]})"), expected);
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": "a"}, {"path": "b"}, {"path": "B"}]})"),
            "cameras[2].path: must differ from cameras[1].path in more than upper and lower case");
#ifdef _WIN32
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": "\u00e4"}, {"path": "\u00c4"}]})"), expected);
#endif
  EXPECT_EQ(Load(R"({"cameras": [{"path": "usb#1"}, {"path": "usb#1a"}]})").cameras.size(), 2U);
}

// The registry's texts end there, so hosts would see less of the path.
TEST_F(ConfigurationTest, APathWithAZeroCharacterIsRefused) {
  EXPECT_EQ(ErrorOf(R"({"cameras": [{"path": "a\u0000b"}]})"),
            "cameras[0].path: must not hold the character \\u0000");
}

TEST_F(ConfigurationTest, MissingFileIsNamed) {
  try {
    LoadConfiguration(folder.File("none.json"));
    FAIL();
  } catch (const ConfigurationError& error) {
    EXPECT_EQ(error.what(),
              folder.File("none.json") + ": can't be read; must be the name of a JSON file");
  }
}

TEST_F(ConfigurationTest, AFolderIsNoConfiguration) {
  try {
    LoadConfiguration(folder.File("."));
    FAIL();
  } catch (const ConfigurationError& error) {
    EXPECT_EQ(error.what(), folder.File(".") + ": can't be read; must be the name of a JSON file");
  }
}

TEST_F(ConfigurationTest, WrongKeysOfACameraAreNamed) {
  const std::string size =
      "cameras[0].flash.size: must be bytes like 1048576, \"256K\" or \"4M\", 64K to 64M, a "
      "multiple of 4096";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"("flsh": 1)",
       "cameras[0].flsh: unknown key; allowed are path, name, nodes, flash, registers, "
       "list_header, sensors, absent_slave, lengths, faults, seed, trace, state, plugged"},
      {R"("name": 5)", "cameras[0].name: must be a text"},
      {R"("nodes": "vendor")", "cameras[0].nodes: must be a list of node types, by node id"},
      {R"("nodes": ["vendor", "vender"])",
       "cameras[0].nodes[1]: must be one of \"camera-terminal\", \"processing\", \"selector\", "
       "\"streaming\", \"vendor\""},
      {R"("flash": 5)",
       "cameras[0].flash: must be an object with the keys size, file, beyond_end, erase_ms, "
       "program_us"},
      {R"("flash": {"size": "32K"})", size},
      {R"("flash": {"size": 65537})", size},
      {R"("flash": {"size": "65M"})", size},
      {R"("flash": {"size": "99999999999999999999M"})", size},
      {R"("flash": {"size": -65536})", size},
      {R"("flash": {"size": "M"})", size},
      {R"("flash": {"file": ""})", "cameras[0].flash.file: must be a file name"},
      {R"("flash": {"beyond_end": "stop"})",
       "cameras[0].flash.beyond_end: must be one of \"wrap\", \"fail\""},
      {R"("flash": {"erase_ms": 60001})",
       "cameras[0].flash.erase_ms: must be a number or a text \"0x…\", 0 to 60000"},
      {R"("flash": {"program_us": 1.5})",
       "cameras[0].flash.program_us: must be a number or a text \"0x…\", 0 to 0x3938700"},
      {R"("registers": {"0x1g3": 0})",
       "cameras[0].registers.0x1g3: the key must be a decimal number or \"0x…\", 0 to 0xffffffff"},
      {R"("registers": {"0x1a3": "20"})",
       "cameras[0].registers.0x1a3: must be a number or a text \"0x…\", 0 to 0xffffffff"},
      {R"("registers": {"0x1a3": 1, "0x1A3": 2})",
       "cameras[0].registers.0x1a3: the register is given twice"},
      {R"("list_header": 1)", "cameras[0].list_header: must be one of \"ignored\", \"page\""},
      {R"("lengths": {"8": 64})",
       "cameras[0].lengths.8: unknown key; allowed are 1, 2, 3, 4, 5, 6, 7"},
      {R"("lengths": {"1": -1})",
       "cameras[0].lengths.1: must be a number or a text \"0x…\", 0 to 0xffffffff"},
      {R"("plugged": 1)", "cameras[0].plugged: must be true or false"},
  };
  for (const auto& [keys, expected] : cases) {
    EXPECT_EQ(CameraErrorOf(keys), expected) << keys;
  }
}

TEST_F(ConfigurationTest, WrongSensorsAreNamed) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"("sensors": [{"mode": 0}])",
       "cameras[0].sensors[0].slave: missing; must be the slave address, 0 to 255"},
      {R"("sensors": [{"slave": 256, "mode": 0}])",
       "cameras[0].sensors[0].slave: must be a number or a text \"0x…\", 0 to 255"},
      {R"("sensors": [{"slave": 1, "mode": 6}])",
       "cameras[0].sensors[0].mode: must be a number or a text \"0x…\", 0 to 5"},
      {R"("sensors": [{"slave": 1, "mode": 0, "registers": {"0x100": 0}}])",
       "cameras[0].sensors[0].registers.0x100: the key must be a decimal number or \"0x…\", 0 to "
       "0xff"},
      {R"("sensors": [{"slave": 1, "mode": 0, "registers": {"1": 256}}])",
       "cameras[0].sensors[0].registers.1: must be a number or a text \"0x…\", 0 to 255"},
      {R"("sensors": [{"slave": 1, "mode": 0}, {"slave": "0x1", "mode": 1}])",
       "cameras[0].sensors[1]: slave: must differ from the slave addresses of the other sensors"},
      {R"("absent_slave": "none")",
       "cameras[0].absent_slave: must be one of \"zeros\", \"ones\", \"failure\""},
  };
  for (const auto& [keys, expected] : cases) {
    EXPECT_EQ(CameraErrorOf(keys), expected) << keys;
  }
}

TEST_F(ConfigurationTest, WrongFaultsAreNamed) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"({"selector": 8, "lie": true})", ".selector: must be a number or a text \"0x…\", 1 to 7"},
      {R"({"direction": "put", "lie": true})",
       ".direction: must be one of \"set\", \"get\", \"length\", \"any\""},
      {R"({"at": 0, "lie": true})",
       ".at: must be a number or a text \"0x…\", 1 to 0xffffffffffffffff"},
      {R"({"probability": 1.5, "lie": true})", ".probability: must be a number, 0 to 1"},
      {R"({"at": 1, "every": 2, "lie": true})",
       ": may hold only one of at, every, probability and unplug.after"},
      {R"({"at": 1, "unplug": {"after": 2}})",
       ": may hold only one of at, every, probability and unplug.after"},
      {R"({"at": 1})",
       ": must say what happens: result, wrong_tag, length, short, delay_ms, stuck_word, lie or "
       "unplug"},
      {R"({"result": "0x180070017"})",
       ".result: must be a 32-bit result code as a number or a text \"0x…\", or \"S_OK\" or "
       "\"S_FALSE\""},
      {R"({"direction": "set", "wrong_tag": true})",
       ": with wrong_tag the direction must be \"get\""},
      {R"({"direction": "get", "length": 1})", ": with length the direction must be \"length\""},
      {R"({"lie": true, "short": 1})", ": with lie the direction must be \"set\""},
      {R"({"unplug": {"back": 1}})", ".unplug.back: unknown key; allowed are after, back_after_ms"},
      {R"({"delay_ms": 600001})", ".delay_ms: must be a number or a text \"0x…\", 1 to 0x927c0"},
  };
  for (const auto& [fault, expected] : cases) {
    EXPECT_EQ(CameraErrorOf("\"faults\": [" + fault + "]"), "cameras[0].faults[0]" + expected)
        << fault;
  }
}

TEST_F(ConfigurationTest, MoreFaultsThanCountersAreRefused) {
  std::string faults = R"({"lie": true})";
  for (int i = 1; i < 65; ++i) {
    faults += R"(, {"lie": true})";
  }
  EXPECT_EQ(CameraErrorOf("\"faults\": [" + faults + "]"),
            "cameras[0].faults: must hold at most 64 faults");
}

TEST_F(ConfigurationTest, ALineBreakInAKeyStaysOutOfTheError) {
  EXPECT_THAT(CameraErrorOf(R"("a\nb\u007f": 1)"),
              testing::StartsWith(R"(cameras[0].a\u000ab\u007f: unknown key; allowed are path)"));
}

TEST_F(ConfigurationTest, ANumberBeyondADoubleIsAnErrorOfTheConfiguration) {
  EXPECT_EQ(CameraErrorOf(R"("seed": 1e999)"),
            "holds a number that is too large; numbers must lie below 1e308");
}

TEST_F(ConfigurationTest, FileNamesAreUtf8) {
  const std::string name = "k\xC3\xA4mera.json";
  std::ofstream(std::filesystem::path(folder.File("")) /
                std::filesystem::path(u8"k\u00e4mera.json"))
      << R"({"cameras": [{"path": "a", "flash": {"size": "64K"}}]})";
  const CameraConfiguration camera = LoadConfiguration(folder.File("") + name).cameras.at(0);
  virtual_camera::Camera opened(camera);
  EXPECT_EQ(std::filesystem::file_size(std::filesystem::path(folder.File("")) /
                                       std::filesystem::path(u8"k\u00e4mera.camera0.flash")),
            64U * 1024);
}

TEST_F(ConfigurationTest, FilesThatCantBeOpenedAreNamed) {
  CameraConfiguration camera = Load(R"({"cameras": [{"path": "a"}]})").cameras.at(0);
  const std::string missing = folder.File("no such folder/file");
  const auto error_of = [](const CameraConfiguration& configuration) {
    try {
      virtual_camera::Camera opened(configuration);
    } catch (const ConfigurationError& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  CameraConfiguration wrong = camera;
  wrong.state_file = missing;
  EXPECT_THAT(error_of(wrong), testing::StartsWith("state: can't use the file \"" + missing));
  wrong = camera;
  wrong.flash.file = missing;
  EXPECT_THAT(error_of(wrong), testing::StartsWith("flash: can't use the file \"" + missing));
  wrong = camera;
  wrong.trace_file = missing;
  EXPECT_THAT(error_of(wrong), testing::StartsWith("trace: can't use the file \"" + missing));
}

}  // namespace
}  // namespace virtual_camera_test
