// One bad transfer anywhere while registers of chip and sensor are read, compared and loaded.
#include <nlohmann/json.hpp>

#include "command/command.h"
#include "i2c/bus_options.h"
#include "i2c/dump.h"
#include "i2c/load.h"
#include "i2c/read.h"
#include "i2c/write.h"
#include "registers/diff.h"
#include "registers/dump.h"
#include "registers/load.h"
#include "registers/read.h"
#include "registers/write.h"
#include "sweep/contents.h"
#include "sweep/fault_sweep.h"

namespace borvanusb::sweep {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint32_t kFirst = 0x200;
constexpr std::uint8_t kSlave8 = 0x48;
constexpr std::uint8_t kSlave16 = 0x6C;
constexpr std::uint8_t kSlaveWide = 0x20;

std::string Digits(std::uint32_t number, int digits) {
  std::array<char, 16> text{};
  const int size = std::snprintf(text.data(), text.size(), "0x%0*x", digits, number);
  return {text.data(), static_cast<std::size_t>(size)};
}

std::string Line(std::uint32_t address, std::uint32_t value, int value_digits = 2) {
  return Digits(address, 4) + ", " + Digits(value, value_digits) + ",\n";
}

// Values of adjacent registers: random, all equal, zeros, repeated after each block of 56.
std::vector<NamedBytes> RegisterContents(std::size_t size) {
  const Bytes random = RandomBytes(size, 11);
  Bytes repeating(size);
  for (std::size_t i = 0; i < size; ++i) {
    repeating[i] = random[i % 56];
  }
  return {{"random", random},
          {"all alike", Bytes(size, 0xA5)},
          {"all zeros", Bytes(size, 0)},
          {"repeating", repeating}};
}

Content WithRegisters(const Bytes& values) {
  Content content;
  content.flash = Bytes(kFlashSize, 0xFF);
  for (std::uint32_t i = 0; i < values.size(); ++i) {
    content.registers[kFirst + i] = values[i];
  }
  return content;
}

std::string WrongFile(const SweepTest& rig, const RunEnd& end, const std::string& wanted) {
  const Bytes found = rig.Read("dump.txt").value_or(Bytes());
  const bool equal = std::string(found.begin(), found.end()) == wanted;
  return end.code == ExitCode::kDone && !equal
             ? "the list is wrong: " + Difference(Bytes(wanted.begin(), wanted.end()), found)
             : "";
}

TEST_F(SweepTest, RegDump) {
  FaultSweep sweep(*this);
  for (const std::size_t count : {20U, 200U}) {
    for (const NamedBytes& values : RegisterContents(count)) {
      std::string wanted = Line(0xFFFD, 0) + Line(0xFFFE, 0);
      for (std::uint32_t i = 0; i < count; ++i) {
        wanted += Line(kFirst + i, values.bytes[i]);
      }
      Scenario scenario;
      scenario.name = "reg dump, " + std::to_string(count) + " registers, " + values.name;
      scenario.content = WithRegisters(values.bytes);
      scenario.run = [count](SweepTest& rig, Context& context) {
        const auto last = static_cast<std::uint32_t>(kFirst + count - 1);
        return RunValues(RegDumpCommand{{kFirst, last}, rig.File("dump.txt"), false}, context);
      };
      scenario.wrong = [wanted](const SweepTest& rig, const RunEnd& end) {
        return WrongFile(rig, end, wanted);
      };
      sweep.Sweep(scenario);
    }
  }
}

TEST_F(SweepTest, RegDiff) {
  FaultSweep sweep(*this);
  constexpr std::size_t kCount = 30;
  for (const NamedBytes& values : RegisterContents(kCount)) {
    for (const bool equal : {true, false}) {
      std::string list = Line(0xFFFD, 0);
      for (std::uint32_t i = 0; i < kCount; ++i) {
        const bool differs = !equal && i % 10 == 3;
        list += Line(kFirst + i, values.bytes[i] ^ (differs ? 0x11U : 0U));
      }
      Json differences = Json::array();
      for (std::uint32_t i = 3; !equal && i < kCount; i += 10) {
        const std::uint32_t value = values.bytes[i];
        differences.push_back({{"address", kFirst + i}, {"left", value ^ 0x11U}, {"right", value}});
      }
      Scenario scenario;
      scenario.name = std::string("reg diff, ") + (equal ? "equal, " : "different, ") + values.name;
      scenario.content = WithRegisters(values.bytes);
      scenario.expected = equal ? ExitCode::kDone : ExitCode::kVerify;
      scenario.prepare = [list](SweepTest& rig) { rig.Put("list.txt", list); };
      scenario.run = [](SweepTest& rig, Context& context) {
        return RunValues(RegDiffCommand{rig.File("list.txt"), "camera"}, context);
      };
      scenario.wrong = [equal, differences](const SweepTest& /*rig*/, const RunEnd& end) {
        const bool claimed = end.code == ExitCode::kDone || end.code == ExitCode::kVerify;
        const bool right = (end.code == ExitCode::kDone) == equal &&
                           end.result.value("differences", Json()) == differences;
        return claimed && !right ? "told: " + end.result.dump() : std::string();
      };
      sweep.Sweep(scenario);
    }
  }
}

// Single registers

TEST_F(SweepTest, RegReadAndWrite) {
  FaultSweep sweep(*this);
  for (const bool wide : {false, true}) {
    for (const bool write : {false, true}) {
      constexpr std::uint32_t kBefore = 0x1122C3A5;
      const std::uint32_t held = wide ? kBefore : kBefore & 0xFF;
      const std::uint32_t wanted = write ? (held & ~0xF0U) | 0x50U : held;
      Scenario scenario;
      scenario.name =
          std::string(write ? "reg write --mask --verify" : "reg read") + (wide ? " --wide" : "");
      scenario.content = WithRegisters({});
      scenario.content.registers[kFirst] = kBefore;
      scenario.run = [write, wide](SweepTest& /*rig*/, Context& context) {
        return write ? RunValues(RegWriteCommand{kFirst, 0x50, wide, 0xF0, true}, context)
                     : RunValues(RegReadCommand{{kFirst, kFirst}, wide}, context);
      };
      scenario.wrong = [write, wide, wanted](const SweepTest& rig, const RunEnd& end) {
        const std::uint32_t found = rig.Camera().Register(kFirst) & (wide ? 0xFFFFFFFF : 0xFF);
        if (end.code == ExitCode::kVerify) {
          return std::string(found == wanted ? "the register holds the value" : "");
        }
        const Json told = write ? end.result.value("value", Json())
                                : end.result.value("registers", Json(1, Json()))[0]["value"];
        return end.code == ExitCode::kDone && (found != wanted || told != wanted)
                   ? "told: " + end.result.dump() + ", true: " + Digits(found, 2)
                   : std::string();
      };
      sweep.Sweep(scenario);
    }
  }
}

// Loading

struct Expected {
  std::optional<std::uint8_t> slave;  // nothing: the chip
  std::uint32_t address = 0;
  std::uint32_t value = 0;
};

std::uint32_t Held(const SweepTest& rig, const Expected& expected) {
  return expected.slave ? rig.Camera().Sensor(*expected.slave, expected.address)
                        : rig.Camera().Register(expected.address) & 0xFF;
}

std::string WrongLoad(const SweepTest& rig, const RunEnd& end,
                      const std::vector<Expected>& registers) {
  std::uint64_t wrong = 0;
  std::string first;
  for (const Expected& expected : registers) {
    if (const std::uint32_t held = Held(rig, expected); held != expected.value) {
      first = wrong++ == 0 ? Digits(expected.address, 4) + " holds " + Digits(held, 2) : first;
    }
  }
  if (end.code == ExitCode::kDone && wrong != 0) {
    return std::to_string(wrong) + " registers are wrong, the first: " + first;
  }
  if (end.code == ExitCode::kVerify && end.result["wrong"].size() != wrong) {
    return std::to_string(wrong) + " registers are wrong, told: " + end.result["wrong"].dump();
  }
  return "";
}

TEST_F(SweepTest, RegLoadVerify) {
  FaultSweep sweep(*this);
  for (const NamedBytes& values : RegisterContents(100)) {
    // Many adjacent registers, single ones, and one that occurs twice.
    std::string list = Line(0xFFFD, 0) + Line(0xFFFE, 0);
    std::vector<Expected> registers;
    for (std::uint32_t i = 0; i < 80; ++i) {
      list += Line(0x300 + i, values.bytes[i]);
      registers.push_back({{}, 0x300 + i, values.bytes[i]});
    }
    list += Line(0x500, 0x77);
    for (std::uint32_t i = 80; i < 100; ++i) {
      list += Line(0x500 + 3 * (i - 80), values.bytes[i]);
      registers.push_back({{}, 0x500 + 3 * (i - 80), values.bytes[i]});
    }
    for (const std::uint32_t before : {0x00U, 0xA5U}) {
      Scenario scenario;
      scenario.name = "reg load --verify, " + values.name + " over " + Digits(before, 2);
      scenario.content = WithRegisters({});
      for (const Expected& expected : registers) {
        scenario.content.registers[expected.address] = before;
      }
      scenario.prepare = [list](SweepTest& rig) { rig.Put("list.txt", list); };
      scenario.run = [](SweepTest& rig, Context& context) {
        RegLoadCommand command;
        command.file = rig.File("list.txt");
        command.verify = true;
        return RunValues(command, context);
      };
      scenario.wrong = [registers](const SweepTest& rig, const RunEnd& end) {
        return WrongLoad(rig, end, registers);
      };
      sweep.Sweep(scenario);
    }
  }
}

std::vector<virtual_camera::SensorConfiguration> Sensors(const Bytes& values) {
  std::vector<virtual_camera::SensorConfiguration> sensors(3);
  sensors[0] = {.slave = kSlave8, .mode = 0, .registers = {}};
  sensors[1] = {.slave = kSlave16, .mode = 1, .registers = {}};
  sensors[2] = {.slave = kSlaveWide, .mode = 2, .registers = {}};
  for (std::uint32_t i = 0; i < values.size(); ++i) {
    sensors[0].registers[i] = values[i];
    sensors[1].registers[0x3000 + i] = values[i];
    sensors[2].registers[0x3000 + i] =
        static_cast<std::uint32_t>(values[i]) << 8U | values[(i + 1) % values.size()];
  }
  return sensors;
}

struct DumpKind {
  const char* name;
  std::size_t sensor;
  std::int32_t mode;
  std::uint32_t count;  // registers
  bool fast;
};

Scenario DumpOf(const DumpKind& kind, const NamedBytes& values) {
  const auto sensors = Sensors(values.bytes);
  const auto& sensor = sensors[kind.sensor];
  const std::uint32_t first = sensor.registers.begin()->first;
  const std::uint32_t last = first + kind.count - 1;
  std::string wanted = Line(0xFFF8, sensor.slave) + Line(0xFFFE, kind.mode == 2 ? 4 : 3);
  for (std::uint32_t address = first; address <= last; ++address) {
    wanted += Line(address, sensor.registers.at(address), kind.mode == 2 ? 4 : 2);
  }
  Scenario scenario;
  scenario.name = std::string("i2c dump, ") + kind.name + ", " + values.name;
  scenario.content = WithRegisters({});
  scenario.content.fast_i2c = kind.fast;
  scenario.content.sensors = sensors;
  scenario.run = [slave = sensor.slave, mode = kind.mode, first, last](SweepTest& rig,
                                                                       Context& context) {
    I2cDumpCommand command;
    command.i2c = {slave, mode, 0};
    command.range = {first, last};
    command.file = rig.File("dump.txt");
    return RunValues(command, context);
  };
  scenario.wrong = [wanted](const SweepTest& rig, const RunEnd& end) {
    return WrongFile(rig, end, wanted);
  };
  return scenario;
}

TEST_F(SweepTest, I2cDump) {
  FaultSweep sweep(*this);
  constexpr std::array<DumpKind, 4> kKinds = {{
      {"16/8, in blocks", 1, 1, 150, true},
      {"16/8, one block", 1, 1, 30, true},
      {"16/8, one by one", 1, 1, 30, false},
      {"16/16", 2, 2, 30, true},
  }};
  for (const NamedBytes& values : RegisterContents(150)) {
    for (const DumpKind& kind : kKinds) {
      sweep.Sweep(DumpOf(kind, values));
    }
  }
}

// Registers that never answer, between others. Blocks that contain them are always refused, and the
// library only reports the end of the last block.
TEST_F(SweepTest, I2cDumpOverARegisterThatNeverAnswers) {
  for (const NamedBytes& values : RegisterContents(150)) {
    for (const std::uint32_t silent : {0x3001U, 0x3038U, 0x3040U, 0x3070U, 0x3095U}) {
      Scenario scenario = DumpOf({"16/8, in blocks", 1, 1, 150, true}, values);
      scenario.content.silent_register = silent;
      StartAnew(scenario.content);
      const RunEnd end =
          Perform([&](Context& context) { return scenario.run(*this, context); }, std::nullopt);
      EXPECT_EQ(end.code, ExitCode::kDevice) << scenario.name;
      EXPECT_NE(end.message.find(Hex(silent)), std::string::npos) << end.message;
      EXPECT_FALSE(Read("dump.txt")) << scenario.name;
    }
  }
}

TEST_F(SweepTest, I2cReadAndWrite) {
  FaultSweep sweep(*this);
  for (const bool write : {false, true}) {
    Scenario scenario;
    scenario.name = write ? "i2c write --mask --verify" : "i2c read";
    scenario.content = WithRegisters({});
    scenario.content.sensors = Sensors(Bytes(100, 0xA5));
    scenario.run = [write](SweepTest& /*rig*/, Context& context) {
      const I2cOptions options{kSlaveWide, 2, 0};
      return write ? RunValues(I2cWriteCommand{options, 0x3000, 0x50, 0xF0, true}, context)
                   : RunValues(I2cReadCommand{options, {0x3000, 0x3000}}, context);
    };
    const std::uint32_t wanted = write ? 0xA555 : 0xA5A5;
    scenario.wrong = [write, wanted](const SweepTest& rig, const RunEnd& end) {
      const std::uint32_t found = rig.Camera().Sensor(kSlaveWide, 0x3000);
      if (end.code == ExitCode::kVerify) {
        return std::string(found == wanted ? "the register holds the value" : "");
      }
      const Json told = write ? end.result.value("value", Json())
                              : end.result.value("registers", Json(1, Json()))[0]["value"];
      return end.code == ExitCode::kDone && (found != wanted || told != wanted)
                 ? "told: " + end.result.dump() + ", true: " + Digits(found, 4)
                 : std::string();
    };
    sweep.Sweep(scenario);
  }
}

TEST_F(SweepTest, I2cLoadVerify) {
  FaultSweep sweep(*this);
  constexpr std::size_t kCount = 20;
  for (const NamedBytes& values : RegisterContents(3 * kCount)) {
    std::string list;
    std::vector<Expected> registers;
    const auto add = [&](std::uint8_t slave, std::uint32_t code, std::uint32_t first,
                         std::uint32_t step, std::size_t from) {
      list += Line(0xFFF8, slave) + Line(0xFFFE, code);
      for (std::uint32_t i = 0; i < kCount; ++i) {
        const std::uint32_t value = values.bytes[from + i];
        list += Line(first + step * i, value);
        registers.push_back({slave, first + step * i, value});
      }
    };
    add(kSlave16, 0x03, 0x3000, 1, 0);
    add(kSlave8, 0x01, 0x10, 3, kCount);
    add(kSlaveWide, 0x04, 0x3000, 2, 2 * kCount);
    for (const bool fast : {true, false}) {
      for (const std::uint8_t before : {std::uint8_t{0x00}, std::uint8_t{0xA5}}) {
        Scenario scenario;
        scenario.name = std::string("i2c load --verify, ") + (fast ? "fast, " : "by steps, ") +
                        values.name + " over " + Digits(before, 2);
        scenario.content = WithRegisters({});
        scenario.content.fast_i2c = fast;
        scenario.content.sensors = Sensors(Bytes(100, before));
        scenario.prepare = [list](SweepTest& rig) { rig.Put("list.txt", list); };
        scenario.run = [](SweepTest& rig, Context& context) {
          I2cLoadCommand command;
          command.file = rig.File("list.txt");
          command.verify = true;
          return RunValues(command, context);
        };
        scenario.wrong = [registers](const SweepTest& rig, const RunEnd& end) {
          return WrongLoad(rig, end, registers);
        };
        sweep.Sweep(scenario);
      }
    }
  }
}

}  // namespace
}  // namespace borvanusb::sweep
