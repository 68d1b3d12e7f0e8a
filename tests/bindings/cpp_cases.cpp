// Runs the table of cases with the C++ binding. Usage: cpp_cases CASES.json, in the folder with the
// cameras' configuration. Prints each step that went wrong; exit code 1 then.

#include <borvan_usb.hpp>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>

namespace {

using nlohmann::json;
using Bytes = std::vector<std::uint8_t>;

std::uint32_t Number(const json& value) {
  return value.is_string()
             ? static_cast<std::uint32_t>(std::stoul(value.get<std::string>(), nullptr, 16))
             : value.get<std::uint32_t>();
}

Bytes Content(const json& content) {
  const std::string digits = content.at("repeat");
  Bytes bytes(content.at("bytes").get<std::size_t>());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] =
        static_cast<std::uint8_t>(std::stoul(digits.substr(2 * i % digits.size(), 2), nullptr, 16));
  }
  return bytes;
}

Bytes FileContent(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void MakeFile(const json& file) {
  std::ofstream stream(file.at("file").get<std::string>(), std::ios::binary);
  if (file.contains("text")) {
    stream << file.at("text").get<std::string>();
    return;
  }
  const Bytes bytes = Content(file);
  stream.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

// The arguments of a step by their names, with the defaults of the calls.
class Arguments {
 public:
  explicit Arguments(const json& step) : values_(step.value("arguments", json::object())) {}

  std::uint32_t operator[](const char* name) const {
    return values_.contains(name) ? Number(values_.at(name)) : 0;
  }
  std::string File() const { return values_.at("file"); }
  std::int32_t Index() const { return values_.at("index"); }
  borvan::I2cMode Mode() const {
    return static_cast<borvan::I2cMode>(values_.at("mode").get<int>());
  }
  borvan::Width Width() const {
    return values_.value("wide", false) ? borvan::Width::kWide : borvan::Width::kByte;
  }
  borvan::Milliseconds Limit() const {
    return borvan::Milliseconds(values_.value("time_limit_ms", 60'000));
  }

 private:
  const json values_;
};

json List(borvan::Camera& camera) {
  json cameras = json::array();
  for (const borvan::CameraInfo& info : camera.List()) {
    cameras.push_back({{"index", info.index},
                       {"name", info.name},
                       {"vid", info.vendor_id},
                       {"pid", info.product_id},
                       {"path", info.path}});
  }
  return cameras;
}

using Call = json (*)(borvan::Camera&, const Arguments&);

using C = borvan::Camera;
using A = Arguments;

const std::map<std::string, Call> kCalls = {
    {"list", [](C& c, const A&) { return List(c); }},
    {"select", [](C& c, const A& a) { return c.Select(a.Index()), json(); }},
    {"close", [](C& c, const A&) { return c.Close(), json(); }},
    {"wait", [](C& c, const A& a) { return c.Wait(a.Limit()), json(); }},
    {"read_register",
     [](C& c, const A& a) { return json(c.ReadRegister(a["address"], a.Width())); }},
    {"write_register",
     [](C& c, const A& a) { return c.WriteRegister(a["address"], a["value"], a.Width()), json(); }},
    {"read_i2c",
     [](C& c, const A& a) {
       return json(c.ReadI2c(a["slave"], a["address"], a.Mode(), a["option"]));
     }},
    {"write_i2c",
     [](C& c, const A& a) {
       return c.WriteI2c(a["slave"], a["address"], a["value"], a.Mode(), a["option"]), json();
     }},
    {"read_flash_word", [](C& c, const A& a) { return json(c.ReadFlashWord(a["address"])); }},
    {"write_flash_word",
     [](C& c, const A& a) { return c.WriteFlashWord(a["address"], a["value"]), json(); }},
    {"erase_flash_sector",
     [](C& c, const A& a) { return c.EraseFlashSector(a["address"]), json(); }},
    {"read_flash",
     [](C& c, const A& a) { return json(c.ReadFlash(a["first"], a["count"], a.Limit())); }},
    {"read_flash_file",
     [](C& c, const A& a) {
       return c.ReadFlashFile(a.File(), a["first"], a["last"], a.Limit()), json();
     }},
    {"write_flash_file",
     [](C& c, const A& a) { return c.WriteFlashFile(a.File(), a["address"], a.Limit()), json(); }},
    {"read_registers_file",
     [](C& c, const A& a) {
       return c.ReadRegistersFile(a.File(), a["first"], a["last"], a.Limit()), json();
     }},
    {"write_register_list",
     [](C& c, const A& a) { return c.WriteRegisterList(a.File(), a.Limit()), json(); }},
    {"read_i2c_file",
     [](C& c, const A& a) {
       return c.ReadI2cFile(a.File(), a["slave"], a.Mode(), a["first"], a["last"], a.Limit()),
              json();
     }},
    {"write_i2c_list",
     [](C& c, const A& a) { return c.WriteI2cList(a.File(), a["option"], a.Limit()), json(); }},
};

// What is wrong with the end of a step; empty when nothing is.
std::string CompareError(const json& step, const borvan::Error& error) {
  if (!step.contains("error")) {
    return std::string("it failed: ") + error.what();
  }
  const json& expected = step.at("error");
  const std::uint32_t status = expected.contains("status") ? Number(expected.at("status")) : 0;
  const bool has_text =
      std::string(error.what()).find(expected.at("text").get<std::string>()) != std::string::npos;
  // The status of "nothing-written" is that of the library.
  const bool has_status = error.Status() == status || error.Status() < 0x80000000U;
  if (KindName(error.Kind()) != expected.at("kind").get<std::string>() || !has_status ||
      !has_text) {
    return std::string("another error: ") + KindName(error.Kind()) + " " +
           std::to_string(error.Status()) + " " + error.what();
  }
  return "";
}

std::string RunStep(borvan::Camera& camera, const json& step) {
  const Arguments arguments(step);
  json value;
  try {
    value = kCalls.at(step.at("call"))(camera, arguments);
  } catch (const borvan::Error& error) {
    return CompareError(step, error);
  }
  if (step.contains("error")) {
    return "it did not fail";
  }
  if (step.contains("returns")) {
    const json& returns = step.at("returns");
    json expected = returns;
    if (returns.is_object()) {
      expected = Content(returns);
    } else if (!returns.is_array()) {
      expected = Number(returns);
    }
    if (value != expected) {
      return "it returned " + value.dump();
    }
  }
  if (step.contains("file_holds") &&
      FileContent(arguments.File()) != Content(step.at("file_holds"))) {
    return "the file holds something else";
  }
  return "";
}

int RunCases(const json& table) {
  int wrong = 0;
  int steps = 0;
  for (const json& each : table.at("cases")) {
    for (const json& file : each.value("makes", json::array())) {
      MakeFile(file);
    }
    borvan::Camera camera;
    for (const json& step : each.at("steps")) {
      ++steps;
      const std::string complaint = RunStep(camera, step);
      if (!complaint.empty()) {
        ++wrong;
        std::cout << each.at("name").get<std::string>() << ": " << step.dump() << "\n  "
                  << complaint << "\n";
      }
    }
  }
  std::cout << table.at("cases").size() << " cases, " << steps << " steps, " << wrong << " wrong\n";
  return wrong == 0 && steps > 0 ? 0 : 1;
}

int Run(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: cpp_cases CASES.json\n";
    return 2;
  }
  std::ifstream file(argv[1]);
  return RunCases(json::parse(file));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 3;
  }
}
