#include "core/configuration.h"

#include <algorithm>
#include <array>
#include <fstream>

#include "core/configuration_faults.h"
#include "core/configuration_files.h"
#include "core/format.h"
#include "core/json_reader.h"
#include "core/names.h"
#include "core/utf8_path.h"

namespace virtual_camera {
namespace {

constexpr std::uint64_t kLongestMs = 60'000;
constexpr std::uint64_t kLongestUs = 60'000'000;
constexpr std::size_t kMaxNodes = 255;  // a node id of the USB descriptor has 8 bits

// Names in the file are relative to its folder.
struct Place {
  std::filesystem::path folder;
  std::string stem;

  std::string Resolve(const std::string& name) const {
    return Utf8FromPath(folder / PathFromUtf8(name));
  }
};

std::string ReadFileName(const JsonReader& reader, const Place& place) {
  const std::string name = reader.Text("a file name");
  if (name.empty() || name.find('\0') != std::string::npos) {
    reader.Fail("must be a file name");
  }
  return place.Resolve(name);
}

std::map<std::uint32_t, std::uint32_t> ReadRegisters(const JsonReader& reader,
                                                     std::uint32_t highest_address,
                                                     std::uint32_t highest_value) {
  std::map<std::uint32_t, std::uint32_t> registers;
  for (const auto& [key, value] : reader.Members("an object like {\"0x1a3\": \"0x20\"}")) {
    const std::uint32_t address = value.KeyNumber(key, highest_address);
    const auto number = static_cast<std::uint32_t>(value.Number(0, highest_value));
    if (!registers.emplace(address, number).second) {
      value.Fail("the register is given twice");
    }
  }
  return registers;
}

FlashConfiguration ReadFlash(const JsonReader& reader, const Place& place) {
  reader.CheckKeys({"size", "file", "beyond_end", "erase_ms", "program_us"});
  FlashConfiguration flash;
  if (const auto size = reader.Find("size"); size) {
    flash.size = static_cast<std::uint32_t>(size->Size(kFlashMinimum, kFlashMaximum));
  }
  if (const auto file = reader.Find("file"); file) {
    flash.file = ReadFileName(*file, place);
  }
  if (const auto beyond_end = reader.Find("beyond_end"); beyond_end) {
    flash.beyond_end =
        beyond_end->Choice<BeyondEnd>({{"wrap", BeyondEnd::kWrap}, {"fail", BeyondEnd::kFail}});
  }
  if (const auto erase_ms = reader.Find("erase_ms"); erase_ms) {
    flash.erase_ms = static_cast<std::uint32_t>(erase_ms->Number(0, kLongestMs));
  }
  if (const auto program_us = reader.Find("program_us"); program_us) {
    flash.program_us = static_cast<std::uint32_t>(program_us->Number(0, kLongestUs));
  }
  return flash;
}

SensorConfiguration ReadSensor(const JsonReader& reader) {
  // Address and data bits of width modes 0 to 5.
  constexpr std::array<std::uint32_t, 6> kHighestAddress = {0xFF,       0xFFFF,     0xFFFF,
                                                            0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
  constexpr std::array<std::uint32_t, 6> kHighestValue = {0xFF, 0xFF,   0xFFFF,
                                                          0xFF, 0xFFFF, 0xFFFFFFFF};
  reader.CheckKeys({"slave", "mode", "registers"});
  SensorConfiguration sensor;
  sensor.slave = reader.Require("slave", "the slave address, 0 to 255").Number8();
  sensor.mode = static_cast<std::uint8_t>(
      reader.Require("mode", "the width mode, 0 to 5").Number(0, kHighestAddress.size() - 1));
  if (const auto registers = reader.Find("registers"); registers) {
    sensor.registers =
        ReadRegisters(*registers, kHighestAddress[sensor.mode], kHighestValue[sensor.mode]);
  }
  return sensor;
}

std::vector<SensorConfiguration> ReadSensors(const JsonReader& reader) {
  std::vector<SensorConfiguration> sensors;
  for (const JsonReader& element : reader.Elements("a list of sensors")) {
    const SensorConfiguration sensor = ReadSensor(element);
    for (const SensorConfiguration& other : sensors) {
      if (other.slave == sensor.slave) {
        element.Fail("slave: must differ from the slave addresses of the other sensors");
      }
    }
    sensors.push_back(sensor);
  }
  return sensors;
}

std::vector<NodeType> ReadNodes(const JsonReader& reader) {
  std::vector<NodeType> nodes;
  for (const JsonReader& element : reader.Elements("a list of node types, by node id")) {
    nodes.push_back(element.Choice<NodeType>({{"camera-terminal", NodeType::kCameraTerminal},
                                              {"processing", NodeType::kProcessing},
                                              {"selector", NodeType::kSelector},
                                              {"streaming", NodeType::kStreaming},
                                              {"vendor", NodeType::kVendor}}));
  }
  if (nodes.size() > kMaxNodes) {
    reader.Fail(Format("must hold at most {} nodes", kMaxNodes));
  }
  return nodes;
}

void ReadLengths(const JsonReader& reader, std::array<std::uint32_t, kSelectorCount>& lengths) {
  reader.CheckKeys({"1", "2", "3", "4", "5", "6", "7"});
  for (std::uint32_t selector = 1; selector <= kSelectorCount; ++selector) {
    if (const auto length = reader.Find(std::to_string(selector)); length) {
      lengths[selector - 1] = length->Number32();
    }
  }
}

// Reads the keys for the behaviour of the chip and its surroundings.
void ReadBehaviour(const JsonReader& reader, CameraConfiguration& camera) {
  if (const auto registers = reader.Find("registers"); registers) {
    camera.registers = ReadRegisters(*registers, 0xFFFFFFFF, 0xFFFFFFFF);
  }
  if (const auto list_header = reader.Find("list_header"); list_header) {
    camera.list_header = list_header->Choice<ListHeader>(
        {{"ignored", ListHeader::kIgnored}, {"page", ListHeader::kPage}});
  }
  if (const auto sensors = reader.Find("sensors"); sensors) {
    camera.sensors = ReadSensors(*sensors);
  }
  if (const auto absent = reader.Find("absent_slave"); absent) {
    camera.absent_slave = absent->Choice<AbsentSlave>({{"zeros", AbsentSlave::kZeros},
                                                       {"ones", AbsentSlave::kOnes},
                                                       {"failure", AbsentSlave::kFailure}});
  }
  if (const auto lengths = reader.Find("lengths"); lengths) {
    ReadLengths(*lengths, camera.lengths);
  }
  if (const auto faults = reader.Find("faults"); faults) {
    camera.faults = ReadFaults(*faults);
  }
  if (const auto seed = reader.Find("seed"); seed) {
    camera.seed = seed->Number(0, 0xFFFFFFFFFFFFFFFF);
  }
}

// Hosts and the registry identify cameras by their paths.
void CheckPath(const JsonReader& path, const std::string& text,
               const std::vector<CameraConfiguration>& others) {
  if (text.empty()) {
    path.Fail("must not be empty");
  }
  if (text.find('\0') != std::string::npos) {
    path.Fail("must not hold the character \\u0000");
  }
  for (std::size_t i = 0; i < others.size(); ++i) {
    if (SameDevicePath(text, others[i].path)) {
      path.Fail(Format("must differ from cameras[{}].path in more than upper and lower case", i));
    }
  }
}

CameraConfiguration ReadCamera(const JsonReader& reader, const Place& place,
                               const std::vector<CameraConfiguration>& others) {
  reader.CheckKeys({"path", "name", "nodes", "flash", "registers", "list_header", "sensors",
                    "absent_slave", "lengths", "faults", "seed", "trace", "state", "plugged"});
  CameraConfiguration camera;
  const JsonReader path = reader.Require("path", "the device path, a text");
  camera.path = path.Text("the device path, a text");
  CheckPath(path, camera.path, others);
  if (const auto name = reader.Find("name"); name) {
    camera.name = name->Text("a text");
  }
  camera.nodes = {NodeType::kCameraTerminal, NodeType::kProcessing, NodeType::kVendor};
  if (const auto nodes = reader.Find("nodes"); nodes) {
    camera.nodes = ReadNodes(*nodes);
  }
  const std::string base = Format("{}.camera{}", place.stem, others.size());
  camera.flash.file = place.Resolve(Format("{}.flash", base));
  if (const auto flash = reader.Find("flash"); flash) {
    const std::string default_file = camera.flash.file;
    camera.flash = ReadFlash(*flash, place);
    if (camera.flash.file.empty()) {
      camera.flash.file = default_file;
    }
  }
  ReadBehaviour(reader, camera);
  if (const auto trace = reader.Find("trace"); trace) {
    camera.trace_file = ReadFileName(*trace, place);
  }
  camera.state_file = place.Resolve(Format("{}.state", base));
  if (const auto state = reader.Find("state"); state) {
    camera.state_file = ReadFileName(*state, place);
  }
  if (const auto plugged = reader.Find("plugged"); plugged) {
    camera.plugged = plugged->Truth();
  }
  return camera;
}

std::string ReadFile(const std::string& file_utf8) {
  std::ifstream stream(PathFromUtf8(file_utf8), std::ios::binary);
  std::string text;
  std::array<char, 4096> piece{};
  do {
    stream.read(piece.data(), piece.size());
    text.append(piece.data(), static_cast<std::size_t>(stream.gcount()));
  } while (stream);
  if (!stream.eof()) {
    throw ConfigurationError(
        Format("{}: can't be read; must be the name of a JSON file", file_utf8));
  }
  return text;
}

nlohmann::json ParseFile(const std::string& file_utf8) {
  const std::string text = ReadFile(file_utf8);
  try {
    return nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    const std::size_t position = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
    const std::string_view before = std::string_view(text).substr(0, position);
    const std::size_t last_break = before.rfind('\n');
    const std::size_t column =
        last_break == std::string_view::npos ? position + 1 : position - last_break;
    throw ConfigurationError(Format("{}: line {}, column {}: must be JSON in UTF-8", file_utf8,
                                    std::count(before.begin(), before.end(), '\n') + 1, column));
  } catch (const nlohmann::json::out_of_range&) {
    // The parser throws this for a number like 1e999, without its position.
    throw ConfigurationError(
        Format("{}: holds a number that is too large; numbers must lie below 1e308", file_utf8));
  }
}

}  // namespace

Configuration LoadConfiguration(const std::string& file_utf8) {
  const nlohmann::json document = ParseFile(file_utf8);
  const std::filesystem::path path = PathFromUtf8(file_utf8);
  const Place place{path.parent_path(), Utf8FromPath(path.stem())};
  const JsonReader root(file_utf8, "", document);
  root.CheckKeys({"$schema", "cameras"});
  Configuration configuration{.file = file_utf8, .cameras = {}};
  const JsonReader cameras = root.Require("cameras", "a list of cameras");
  for (const JsonReader& element : cameras.Elements("a list of cameras")) {
    configuration.cameras.push_back(ReadCamera(element, place, configuration.cameras));
  }
  CheckFiles(configuration);
  return configuration;
}

}  // namespace virtual_camera
