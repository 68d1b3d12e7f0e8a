#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "base/failure.h"
#include "base/format.h"
#include "base/joined.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "i2c/scan.h"
#include "output/output.h"
#include "output/progress.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kRow = 16;

using Json = nlohmann::ordered_json;

// The answers: values by slave and width mode.
using Answers = std::map<std::uint32_t, std::map<std::int32_t, std::uint32_t>>;

std::vector<std::int32_t> ModesOf(const I2cScanCommand& command) {
  return command.modes.empty() ? std::vector<std::int32_t>{command.i2c.mode} : command.modes;
}

// With many chips, an empty bus gives these values.
const char* Doubt(std::uint32_t value, std::int32_t mode) {
  if (value == 0) {
    return "zeros";
  }
  return value == WidthModeOf(mode).highest_value ? "ones" : "";
}

bool IsDoubtful(std::uint32_t value, std::int32_t mode) {
  return *Doubt(value, mode) != '\0';
}

// The modes in which the value is not only zeros or only ones.
std::vector<std::int32_t> PlausibleModes(const std::map<std::int32_t, std::uint32_t>& answers) {
  std::vector<std::int32_t> modes;
  for (const auto& [mode, value] : answers) {
    if (!IsDoubtful(value, mode)) {
      modes.push_back(mode);
    }
  }
  return modes;
}

// Throws if the camera itself no longer answers.
void RequireCamera(Camera& camera) {
  try {
    camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  } catch (const Failure& failure) {
    throw Failure(
        failure.Code(),
        Format("while scanning, the camera itself stopped answering: {}", failure.Message()),
        failure.Hint());
  }
}

// The answer of a slave. A single failed transfer is repeated; returns nothing if the second one
// fails, too.
std::optional<std::uint32_t> AnswerOf(Camera& camera, const I2cTarget& target,
                                      std::uint32_t address, Context& context) {
  for (int i = 0; i < 2; ++i) {
    try {
      return camera.ReadI2c(target, address);
    } catch (const Failure& failure) {
      if (failure.Code() != ExitCode::kDevice) {
        throw;
      }
      context.output.Detail(Format("slave {}: {}", Hex(target.slave, 2), failure.Message()));
    }
  }
  return std::nullopt;
}

Answers Scan(const I2cScanCommand& command, Camera& camera, Context& context) {
  Answers answers;
  const std::vector<std::int32_t> modes = ModesOf(command);
  context.progress.Begin("scan", command.slaves.Size(), ProgressUnit::kSlaves);
  for (std::uint32_t slave = command.slaves.first; slave <= command.slaves.last; ++slave) {
    bool answered = false;
    for (const std::int32_t mode : modes) {
      const I2cTarget target{slave, mode, command.i2c.option};
      if (const auto answer = AnswerOf(camera, target, command.address, context)) {
        answers[slave][mode] = *answer;
        answered = true;
      }
    }
    // If the camera was unplugged, reads fail as on an empty bus, so the camera is checked from
    // time to time.
    if (!answered && (slave % kRow == kRow - 1 || slave == command.slaves.last)) {
      RequireCamera(camera);
    }
    context.progress.Advance(slave - command.slaves.first + 1);
  }
  context.progress.Done();
  return answers;
}

std::string Cell(std::uint32_t slave, const I2cScanCommand& command, const Answers& answers) {
  if (slave < command.slaves.first || slave > command.slaves.last) {
    return "   ";
  }
  const auto answer = answers.find(slave);
  if (answer == answers.end()) {
    return " --";
  }
  return PlausibleModes(answer->second).empty() ? " ??" : Format(" {}", Hex(slave, 2).substr(2));
}

void PrintGrid(const I2cScanCommand& command, const Answers& answers, Output& output) {
  std::string head = "    ";
  for (std::uint32_t column = 0; column < kRow; ++column) {
    head += Format("  {}", Hex(column).substr(2));
  }
  output.Line(head);
  for (std::uint32_t row = 0; row <= kHighestSlave; row += kRow) {
    std::string line = Hex(row, 2);
    for (std::uint32_t column = 0; column < kRow; ++column) {
      line += Cell(row + column, command, answers);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.Line(line);
  }
  output.Line("-- no answer   ?? only zeros or only ones");
}

std::string DoubtText(std::uint32_t value, std::int32_t mode) {
  const std::string doubt = Doubt(value, mode);
  return doubt.empty() ? "" : Format("  answers, but only {}: maybe nothing is there", doubt);
}

std::vector<std::string> NamesOf(const std::vector<std::int32_t>& modes) {
  std::vector<std::string> names;
  names.reserve(modes.size());
  for (const std::int32_t mode : modes) {
    names.emplace_back(WidthModeOf(mode).name);
  }
  return names;
}

// What the answers in several modes show about a device.
std::string ModeText(const std::map<std::int32_t, std::uint32_t>& answers) {
  const std::vector<std::int32_t> modes = PlausibleModes(answers);
  if (modes.empty()) {
    return "no mode gives more than zeros or ones";
  }
  if (modes.size() == 1) {
    return Format("seems to have width mode {}", WidthModeOf(modes.front()).name);
  }
  return Format("may have width mode {}", Joined(NamesOf(modes), " or "));
}

void PrintList(const I2cScanCommand& command, const Answers& answers, Output& output) {
  output.Line("");
  for (const auto& [slave, by_mode] : answers) {
    for (const auto& [mode, value] : by_mode) {
      const WidthMode& width = WidthModeOf(mode);
      output.Line(Format("{}{}  {}{}", Hex(slave, 2),
                         command.modes.empty() ? "" : Format("  {:5}", width.name),
                         Hex(value, width.value_digits), DoubtText(value, mode)));
    }
    if (!command.modes.empty()) {
      output.Line(Format("      {}", ModeText(by_mode)));
    }
  }
  if (answers.empty()) {
    output.Line("no slave answers");
  }
}

std::string Question(const I2cScanCommand& command) {
  const std::string what = Format("This reads register {} of {}", Hex(command.address),
                                  Count(command.slaves.Size(), "slave"));
  const std::string danger =
      "Reading can disturb a device, such as one that clears a register when it is read.";
  if (command.modes.empty()) {
    return Format("{}. {} Continue?", what, danger);
  }
  return Format(
      "{} in {}. {} A device with addresses of 8 bits interprets the second byte of a longer "
      "address as a value and may write it. Continue?",
      what, Count(command.modes.size(), "width mode"), danger);
}

Json ResultJson(const I2cScanCommand& command, const Answers& answers) {
  const bool one_mode = command.modes.empty();
  Json list = Json::array();
  Json devices = Json::array();
  for (const auto& [slave, by_mode] : answers) {
    for (const auto& [mode, value] : by_mode) {
      Json answer = {{"slave", slave},
                     {"value", value},
                     {"doubt", IsDoubtful(value, mode) ? Json(Doubt(value, mode)) : Json()}};
      if (!one_mode) {
        answer["mode"] = WidthModeOf(mode).name;
      }
      list.push_back(std::move(answer));
    }
    devices.push_back({{"slave", slave}, {"modes", NamesOf(PlausibleModes(by_mode))}});
  }
  Json result = {{"first", command.slaves.first},
                 {"last", command.slaves.last},
                 {"mode", one_mode ? Json(WidthModeOf(command.i2c.mode).name) : Json()},
                 {"option", command.i2c.option},
                 {"address", command.address},
                 {"answers", std::move(list)}};
  if (!one_mode) {
    result["modes"] = NamesOf(command.modes);
    result["devices"] = std::move(devices);
  }
  return result;
}

}  // namespace

ExitCode Run(const I2cScanCommand& command, Context& context) {
  if (command.slaves.last > kHighestSlave) {
    throw Failure(ExitCode::kUsage, Format("--slaves: {} exceeds 0xff", Text(command.slaves)),
                  "Slave addresses are 0 to 0xff, as the chip takes them.");
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  if (!command.yes && !context.host.Ask(Question(command))) {
    throw Failure(ExitCode::kStopped, "nothing was read",
                  "Answer y to continue, or use --yes if no user can answer.");
  }
  const Answers answers = Scan(command, *camera.camera, context);
  PrintGrid(command, answers, context.output);
  PrintList(command, answers, context.output);
  if (!command.modes.empty() && !answers.empty()) {
    context.output.Note(
        "note: a device may answer in a width mode that is not its own; compare a register that "
        "you know, such as its ID");
  }
  context.result = ResultJson(command, answers);
  return ExitCode::kDone;
}

namespace {

std::vector<std::int32_t> ModesValue(const std::string& text) {
  std::vector<std::int32_t> modes;
  if (text == "all") {
    for (std::size_t mode = 0; mode < kWidthModes.size(); ++mode) {
      modes.push_back(static_cast<std::int32_t>(mode));
    }
    return modes;
  }
  std::istringstream names(text + ",");
  for (std::string name; std::getline(names, name, ',');) {
    const std::int32_t mode = WidthModeValue(name);
    if (std::ranges::find(modes, mode) != modes.end()) {
      throw WrongValue(Format("names {} twice", WidthModeOf(mode).name));
    }
    modes.push_back(mode);
  }
  return modes;
}

}  // namespace

CommandRule I2cScanRule() {
  RuleOf<I2cScanCommand> rule({"i2c", "scan"}, "Finds the devices that answer on the I2C bus.");
  rule.Add(Option("--slaves", "RANGE", "which addresses to ask, default 0-255"),
           [](I2cScanCommand& command, const std::string& text) {
             const Range slaves = RangeValue(text);
             if (slaves.last > HighestOf(kByteBits)) {
               throw WrongValue("is not allowed: device addresses go from 0 to 255");
             }
             command.slaves = slaves;
           });
  rule.Add(Option("--address", "A", "register that is read from each, default 0"),
           [](I2cScanCommand& command, const std::string& text) {
             command.address = AddressValue(text);
           });
  AddMode(rule);
  rule.Add(
      Option("--modes", "LIST", "try several width modes: all, or 8/8,16/8 and others"),
      [](I2cScanCommand& command, const std::string& text) { command.modes = ModesValue(text); });
  AddOption(rule);
  rule.AddFlag("--yes", "don't ask first; reading can disturb some devices", &I2cScanCommand::yes);
  rule.Check([](const I2cScanCommand& command, const GivenOptions& given) {
    if (given.Has("--mode") && given.Has("--modes")) {
      throw WrongUse("--mode: means one width mode, --modes several: give one of the two");
    }
    for (const std::int32_t mode : ModesOf(command)) {
      CheckI2cAddress("--address", command.address, {{}, mode, 0});
    }
  });
  rule.Example("borvanusb i2c scan --slaves 0x20-0x7f --yes");
  rule.Example("borvanusb i2c scan --modes 8/8,16/8 --yes");
  return rule.Take();
}

}  // namespace borvanusb
